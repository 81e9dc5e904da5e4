#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "scansqlite/carving/carve_layout.h"

// The serial types that one column of a layout may have. Types below 128 take one byte of the
// header and stand in a bit set; of the larger ones, which are all texts and blobs, only the kind
// counts.
struct SerialTypeSet {
  std::array<uint64_t, 2> short_types{};
  bool long_text = false;
  bool long_blob = false;

  bool HasShort(uint32_t serial_type) const {
    return (short_types[serial_type >> 6] >> (serial_type & 63U) & 1U) != 0;
  }
  bool Has(uint64_t serial_type) const {
    if (serial_type < 128) return HasShort(static_cast<uint32_t>(serial_type));
    return serial_type % 2 == 0 ? long_blob : long_text;
  }
  bool operator==(const SerialTypeSet&) const = default;
};

// How far the sets may look ahead of the tests that a record still has to pass.
enum class SetDepth {
  kClasses,  // what the declared types and the classes of the features admit
  kValues,   // also drops types none of whose values can meet the limits of the features
};

// The sets of the columns of a layout, the column of a row id alias among them.
std::vector<SerialTypeSet> MakeSerialTypeSets(const CarveLayout& layout, SetDepth depth);

// The number of cells, an alias counted, without which no record of the layout is accepted: all of
// them, or fewer for a wide layout with flexible_cnt. More than the layout has columns when a
// feature asks for a column that the layout lacks, so that nothing is ever accepted.
size_t RequiredCells(const CarveLayout& layout);
