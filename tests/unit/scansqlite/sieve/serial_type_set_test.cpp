#include "scansqlite/sieve/serial_type_set.h"

#include <gtest/gtest.h>

#include "scansqlite/carving/position_test.h"
#include "unit/scansqlite/random_layout.h"

namespace {

using hand_made::Bytes;
using random_layout::Layout;

// The serial types that stand for all others.
std::vector<uint64_t> AllTypes() {
  std::vector<uint64_t> types;
  for (uint64_t type = 0; type < 128; ++type) types.push_back(type);
  types.insert(types.end(), {128, 129, 1000, 1001, 70000, 70001});
  return types;
}

// Whether the column takes the type when only declared types and classes are asked for.
bool IsAdmitted(const Layout& layout, size_t column, uint64_t type) {
  SerialTypeCells cells(column + 1);
  cells[column] = hand_made::Cell(type);
  if (!ColumnAllows(layout.layout.columns[column], cells[column].storage_class)) return false;
  for (const FeatureMap& map : layout.features) {
    const auto at = map.find(static_cast<int32_t>(column));
    if (at != map.end() && !MatchesFeature(cells, at->second)) return false;
  }
  return true;
}

TEST(SerialTypeSetTest, ClassesAreThoseOfTheCells) {
  for (uint64_t seed = 1; seed <= 100; ++seed) {
    Dice dice(seed);
    const Layout layout(dice, hand_made::Header(1024, 9));
    const auto sets = MakeSerialTypeSets(layout.layout, SetDepth::kClasses);
    ASSERT_EQ(sets.size(), layout.layout.columns.size());
    for (size_t column = 0; column < sets.size(); ++column) {
      for (const uint64_t type : AllTypes()) {
        ASSERT_EQ(sets[column].Has(type), IsAdmitted(layout, column, type))
            << "seed " << seed << " column " << column << " type " << type;
      }
    }
  }
}

// Random values of a serial type, the ends of its range among them.
Bytes RandomBytes(Dice& dice, size_t length) {
  const size_t style = dice.Below(6);
  Bytes bytes;
  for (size_t i = 0; i < length; ++i) {
    const bool is_last = i + 1 == length;
    const size_t byte = style == 0   ? 0
                        : style == 1 ? 0xFF
                        : style == 2 ? (i == 0 ? 0x7F : 0xFF)
                        : style == 3 ? (i == 0 ? 0x80 : 0)
                        : style == 4 ? (is_last ? dice.Below(256) : 0)
                                     : dice.Below(256);
    bytes.push_back(static_cast<uint8_t>(byte));
  }
  return bytes;
}

// No value of a type that the limits drop would pass.
TEST(SerialTypeSetTest, LimitsDropOnlyTypesThatNoValueCanSave) {
  size_t dropped = 0;
  for (uint64_t seed = 1; seed <= 150; ++seed) {
    Dice dice(seed);
    const Layout layout(dice, hand_made::Header(1024, 9));
    const auto classes = MakeSerialTypeSets(layout.layout, SetDepth::kClasses);
    const auto values = MakeSerialTypeSets(layout.layout, SetDepth::kValues);
    for (size_t column = 0; column < values.size(); ++column) {
      for (const uint64_t type : AllTypes()) {
        if (!classes[column].Has(type) || values[column].Has(type)) {
          ASSERT_TRUE(classes[column].Has(type) || !values[column].Has(type));
          continue;
        }
        ++dropped;
        SerialTypeCells cells(layout.layout.columns.size());
        cells[column] = hand_made::Cell(type);
        const auto index = static_cast<int32_t>(column);
        FeatureMaps checks;
        for (const FeatureMap& map : layout.features) {
          if (map.contains(index)) checks.push_back({{index, map.at(index)}});
        }
        for (int tries = 0; tries < 12; ++tries) {
          std::vector<RawValue> raw(cells.size());
          Bytes bytes = RandomBytes(dice, cells[column].payload_length);
          if (cells[column].is_constant) bytes = {static_cast<uint8_t>(type - 8)};
          raw[column] = hand_made::Raw(bytes, cells[column].storage_class);
          ASSERT_FALSE(ValidateRecord(checks, kEncodingUtf8, cells, raw))
              << "seed " << seed << " column " << column << " type " << type;
        }
      }
    }
  }
  EXPECT_GT(dropped, 500U);
}

// The serial types of integers that some number from `min` to `max` can have.
std::vector<uint64_t> IntegerTypes(int64_t min, int64_t max) {
  Dice dice(1);
  Layout layout(dice, hand_made::Header(1024, 9));
  layout.features = {
      hand_made::FeaturesOf({hand_made::Feature(0, kFieldInteger, kFieldNone, min, max, 1)})};
  layout.layout.columns.assign(1, ColumnRule{false, {true, true, true, true, true}});
  const SerialTypeSet set = MakeSerialTypeSets(layout.layout, SetDepth::kValues).at(0);
  std::vector<uint64_t> types;
  for (uint64_t type = 1; type <= 6; ++type) {
    if (set.Has(type)) types.push_back(type);
  }
  return types;
}

TEST(SerialTypeSetTest, IntegersUpToTheirLastNumber) {
  using Types = std::vector<uint64_t>;
  EXPECT_EQ(IntegerTypes(127, 127), (Types{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(IntegerTypes(-128, -128), (Types{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(IntegerTypes(128, 32767), (Types{2, 3, 4, 5, 6}));
  EXPECT_EQ(IntegerTypes(32767, 32767), (Types{2, 3, 4, 5, 6}));
  EXPECT_EQ(IntegerTypes(32768, 40000), (Types{3, 4, 5, 6}));
  EXPECT_EQ(IntegerTypes(-32769, -32769), (Types{3, 4, 5, 6}));
  EXPECT_EQ(IntegerTypes(0x7FFFFFFF, 0x7FFFFFFF), (Types{4, 5, 6}));
  EXPECT_EQ(IntegerTypes(0x80000000, 0x80000000), (Types{5, 6}));
  EXPECT_EQ(IntegerTypes(0x7FFFFFFFFFFF, 0x7FFFFFFFFFFF), (Types{5, 6}));
  EXPECT_EQ(IntegerTypes(0x800000000000, INT64_MAX), (Types{6}));
  EXPECT_EQ(IntegerTypes(9, 8), Types{});
}

TEST(SerialTypeSetTest, ADateOfMillisecondsIsSixOrEightBytes) {
  Dice dice(1);
  Layout layout(dice, hand_made::Header(1024, 9));
  layout.features = {hand_made::FeaturesOf(
      {hand_made::Feature(0, kFieldInteger, kFieldNone, 1300000000000, 1800000000000, 1)})};
  layout.layout.columns.assign(1, ColumnRule{false, {true, true, true, true, true}});
  const auto sets = MakeSerialTypeSets(layout.layout, SetDepth::kValues);
  EXPECT_EQ(sets[0].short_types, (std::array<uint64_t, 2>{uint64_t{3} << 5, 0}));
  EXPECT_FALSE(sets[0].long_text || sets[0].long_blob);
}

}  // namespace
