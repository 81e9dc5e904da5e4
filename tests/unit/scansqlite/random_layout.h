#pragma once

#include <string>
#include <vector>

#include "scansqlite/carving/carve_layout.h"
#include "scansqlite/sieve/serial_type_set.h"
#include "support/dice.h"
#include "unit/scansqlite/hand_made.h"

// Layouts without much sense, and bytes in which something of them stands.
namespace random_layout {

using hand_made::Bytes;

// A layout with all that it borrows.
class Layout {
 public:
  Layout(Dice& dice, const DbHeaderInfo& header_info) : header(header_info) {
    SchemaCandidate candidate;
    const size_t width = dice.Chance(80) ? 1 + dice.Below(9) : 18 + dice.Below(12);
    const bool loose = dice.Chance(40);
    for (size_t i = 0; i < width; ++i) {
      const auto type = static_cast<int32_t>(loose ? dice.Pick({8, 8, 3, 0, 18}) : dice.Below(17));
      candidate.columns.push_back({"c" + std::to_string(i), type, dice.Chance(i == 0 ? 30 : 4)});
    }
    for (size_t maps = dice.Below(4); maps > 0; --maps) features.push_back(Features(dice, width));
    for (size_t i = 0; i < width; ++i) AddField(dice, i);
    fields.push_back({0, 0, "nowhere", "TEXT"});
    layout.header = &header;
    layout.features = &features;
    layout.result_fields = &result_fields;
    layout.first_column_is_key = FirstColumnIsKey(candidate);
    layout.flexible_cnt = dice.Pick({0, 0, 0, 1, 4, 30, -2});
    layout.columns = MakeColumnRules(candidate, features);
  }
  Layout(const Layout&) = delete;
  Layout& operator=(const Layout&) = delete;

  DbHeaderInfo header;
  FeatureMaps features;
  ResultFieldMap result_fields;
  TableFields fields;
  CarveLayout layout;

 private:
  static FeatureMap Features(Dice& dice, size_t width) {
    FeatureMap map;
    const int percent = dice.Pick({10, 30, 60});
    for (size_t i = 0; i < width; ++i) {
      if (!dice.Chance(percent)) continue;
      const int64_t low = dice.Pick<int64_t>({0, 0, 0, -100, 3, -70000, INT64_MIN});
      const int64_t high = dice.Pick<int64_t>({60, 100, 255, 100000, int64_t{1} << 42, INT64_MAX});
      FieldFeature feature = hand_made::Feature(
          static_cast<int32_t>(i), dice.Pick({0, 0, 1, 2, 2, 3, 4}),
          dice.Pick({-1, 0, 1, 2, 2, 3, 3, 7}), low, high, dice.Pick({0, 0, 0, 1, 1, -1, 2}));
      if (dice.Chance(25)) feature.item_range = ParseByteSet("0x20~0xF7");
      if (dice.Chance(10)) feature.item_not_exist_value = ParseByteSet("'e'");
      map.emplace(feature.column_index, feature);
    }
    if (dice.Chance(3)) map.emplace(40, hand_made::Feature(40, 0, -1, 0, 9));
    return map;
  }

  void AddField(Dice& dice, size_t column) {
    if (dice.Chance(20)) return;
    const std::string name = "c" + std::to_string(column);
    const int32_t type = dice.Pick({0, 1, 2, 3});
    result_fields.Insert(name, hand_made::ResultField(name, type, static_cast<int32_t>(column),
                                                      dice.Chance(5) ? 1 : 0));
    fields.push_back({0, type, name, "TEXT"});
  }
};

// A value whose serial type the set admits if any of some tries does.
inline hand_made::DiskValue ValueOf(Dice& dice, const SerialTypeSet& set) {
  hand_made::DiskValue value;
  for (int tries = 0; tries < 12; ++tries) {
    value.serial_type = dice.Pick<uint64_t>({0,
                                             1,
                                             1,
                                             2,
                                             3,
                                             4,
                                             5,
                                             6,
                                             7,
                                             8,
                                             9,
                                             10,
                                             13,
                                             15,
                                             23,
                                             29,
                                             12,
                                             16,
                                             14 + dice.Below(100),
                                             100 + dice.Below(200),
                                             13 + 2 * dice.Below(20)});
    if (set.Has(value.serial_type)) break;
  }
  const size_t length = hand_made::Cell(value.serial_type).payload_length;
  const size_t style = dice.Below(4);
  for (size_t i = 0; i < length; ++i) {
    const size_t byte = style == 0   ? dice.Below(256)
                        : style == 1 ? (i + 2 < length ? 0 : dice.Below(256))
                                     : 'a' + dice.Below(26);
    value.bytes.push_back(static_cast<uint8_t>(byte));
  }
  if (style == 3 && length > 2 && dice.Chance(50)) value.bytes[dice.Below(length)] = 0x01;
  return value;
}

// A varint with up to `padding` bytes of 0x80 in front.
inline Bytes PaddedVarint(uint64_t value, size_t padding) {
  return hand_made::Join({Bytes(padding, 0x80), hand_made::Varint(value)});
}

// A record of the layout as its sets have it, mostly behind a cell head.
inline Bytes CellOf(Dice& dice, const CarveLayout& layout) {
  const std::vector<SerialTypeSet> sets = MakeSerialTypeSets(layout, SetDepth::kClasses);
  const bool padded = dice.Chance(30);
  Bytes types;
  Bytes body;
  for (size_t column = 0; column < sets.size(); ++column) {
    hand_made::DiskValue value;
    if (column > 0 || !layout.first_column_is_key) value = ValueOf(dice, sets[column]);
    const size_t padding = padded && dice.Chance(30) ? 1 + dice.Below(8) : 0;
    types = hand_made::Join({types, PaddedVarint(value.serial_type, padding)});
    body = hand_made::Join({body, value.bytes});
  }
  const Bytes record = hand_made::Join({hand_made::Varint(types.size() + 1), types, body});
  if (dice.Chance(30)) return record;
  const uint64_t row_id = dice.Word() >> (12 + dice.Below(52));
  return hand_made::Join({hand_made::Varint(record.size()), hand_made::Varint(row_id), record});
}

// Bytes that nobody wrote on purpose, of several styles one after the other.
inline Bytes Noise(Dice& dice, size_t length) {
  Bytes bytes;
  while (bytes.size() < length) {
    const size_t end = std::min(length, bytes.size() + 1 + dice.Below(300));
    const size_t style = dice.Below(6);
    while (bytes.size() < end) {
      const size_t byte = style == 0   ? dice.Below(256)
                          : style == 1 ? dice.Below(16)
                          : style == 2 ? 0
                          : style == 3 ? 'a' + dice.Below(26)
                          : style == 4 ? dice.Pick<size_t>({0x80, 0x80, 0x81, 0xFF, 1, 5, 0x1D})
                                       : dice.Pick<size_t>({0xC3, 0xA4, 0xE4, 0xB8, 0xAD, ' '});
      bytes.push_back(static_cast<uint8_t>(byte));
    }
  }
  return bytes;
}

// Noise with records of the layout in it.
inline Bytes BytesWith(Dice& dice, const CarveLayout& layout, size_t length, size_t records) {
  Bytes bytes = Noise(dice, length);
  for (size_t i = 0; i < records; ++i) {
    const Bytes cell = CellOf(dice, layout);
    if (cell.size() < length) hand_made::Put(bytes, dice.Below(length - cell.size()), cell);
  }
  return bytes;
}

}  // namespace random_layout
