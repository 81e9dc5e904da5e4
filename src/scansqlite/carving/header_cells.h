#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scansqlite/carving/byte_view.h"
#include "scansqlite/carving/record_plan.h"

// HOT CODE. The serial types at one position, read once for all layouts that begin alike: a header
// of 20 columns holds one of 15, and how far a narrower layout gets follows from the same cells.
class HeaderCells {
 public:
  // The made-up cell of a row id alias is empty, but no NULL.
  static constexpr uint64_t kAliasType = ~uint64_t{0};

  // For `widest` and layouts that begin alike and have no more columns. Borrows it.
  explicit HeaderCells(const RecordPlan& widest);

  // Reads cells from `position` on, as long as the columns admit them. False when the position, or
  // what a cell head in front of it needs, is not in memory: nothing is known then.
  bool Read(const ByteView& view, uint64_t position);

  // What a layout of `width` columns sees of the cells that were read last. Cells count with the
  // alias, if there is one.
  size_t CountOf(size_t width) const { return count_ < width ? count_ : width; }
  bool ReachesEnd(size_t width) const { return end_column_ < width; }  // of what is in memory
  bool IsTooLong(size_t count) const { return long_column_ < count; }  // a value exceeds the source
  uint64_t SerialBytes(size_t count) const;  // of the first `count` cells, the alias counts for one
  uint64_t BodyBytes(size_t count) const { return places_[count]; }

  uint64_t type(size_t column) const { return types_[column]; }
  uint64_t place(size_t column) const { return places_[column]; }  // in the body
  uint32_t length(size_t column) const {
    return static_cast<uint32_t>(places_[column + 1] - places_[column]);
  }

 private:
  // A serial type of more than one byte, and how many more.
  struct LongType {
    size_t column;
    uint32_t more_bytes;
  };

  const uint8_t* ReadLongType(const ByteView& view, const uint8_t* at, size_t column);

  const RecordPlan& plan_;
  std::vector<uint64_t> types_;
  std::vector<uint64_t> places_;
  std::vector<LongType> long_types_;
  size_t count_ = 0;
  size_t end_column_ = 0;
  size_t long_column_ = 0;
};

// Whether the cells of one of the layouts are those of the other, as far as both go.
bool BeginAlike(const RecordPlan& a, const RecordPlan& b);
