#include "scansqlite/carving/header_cells.h"

#include <algorithm>
#include <limits>

#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/position_test.h"

namespace {

constexpr size_t kNoColumn = std::numeric_limits<size_t>::max();

// A serial type of more than one byte; `at` stands on its first byte and moves behind it.
uint64_t TakeVarint(const uint8_t*& at, const uint8_t* end) {
  uint64_t value = 0;
  for (int count = 0; at < end && count < 9; ++count) {
    const uint8_t byte = *at++;
    value = (value << 7) + (byte & 0x7FU);
    if ((byte & 0x80U) == 0) break;
  }
  return value;
}

uint32_t LengthOf(uint64_t type) {
  SerialTypeCell cell;
  cell.serial_type = type;
  DecodeSerialType(cell);
  return cell.payload_length;
}

// No value is as long as the source, whose size counts in 32 bits.
bool CanBeAsLong(uint32_t length, const ByteView& view) {
  return length <= kMaxValueBytes && length < static_cast<uint32_t>(view.source_size);
}

}  // namespace

HeaderCells::HeaderCells(const RecordPlan& widest)
    : plan_(widest), types_(widest.width), places_(widest.width + 1) {
  if (widest.first != 0 && widest.width != 0) types_[0] = kAliasType;
}

// The cell whose serial type takes more than one byte, `at` its first one. Gives the place behind
// it, or null when the record ends in front of it.
const uint8_t* HeaderCells::ReadLongType(const ByteView& view, const uint8_t* at, size_t column) {
  const uint8_t* const end = view.bytes + (view.end - view.begin);
  const uint8_t* next = at;
  const uint64_t type = TakeVarint(next, end);
  if (next == end && view.end != view.source_size) end_column_ = std::min(end_column_, column);
  if (!plan_.sets[column].Has(type)) return nullptr;
  const uint32_t length = LengthOf(type);
  types_[column] = type;
  places_[column + 1] = places_[column] + length;
  long_types_.push_back({column, static_cast<uint32_t>(next - at) - 1});
  if (!CanBeAsLong(length, view)) long_column_ = std::min(long_column_, column);
  return next;
}

bool HeaderCells::Read(const ByteView& view, uint64_t position) {
  if (!view.Holds(position, position)) return false;
  if (view.begin != 0 && position < view.begin + kUsualHeadRoom) return false;
  const uint8_t* const end = view.bytes + (view.end - view.begin);
  const uint8_t* at = view.At(position);
  end_column_ = long_column_ = kNoColumn;
  long_types_.clear();
  const size_t width = plan_.width;
  const RecordPlan::ByteLengths* const lengths = plan_.byte_lengths.data();
  uint64_t* const types = types_.data();
  uint64_t* const places = places_.data();
  size_t column = plan_.first;
  uint64_t place = 0;
  for (; column < width && at != end; ++column) {
    const uint8_t byte = *at;
    const uint8_t length = lengths[column][byte];
    if (length < RecordPlan::kRefused) {
      ++at;
      types[column] = byte;
      place += length;
      places[column + 1] = place;
    } else {
      if (length == RecordPlan::kRefused) break;
      const uint8_t* const behind = ReadLongType(view, at, column);
      if (behind == nullptr) break;
      at = behind;
      place = places[column + 1];
    }
  }
  if (at == end && column < width && view.end != view.source_size) {
    end_column_ = std::min(end_column_, column);
  }
  count_ = column;
  return true;
}

uint64_t HeaderCells::SerialBytes(size_t count) const {
  uint64_t bytes = count;
  for (const LongType& type : long_types_) {
    if (type.column < count) bytes += type.more_bytes;
  }
  return bytes;
}

bool BeginAlike(const RecordPlan& a, const RecordPlan& b) {
  const size_t common = std::min(a.width, b.width);
  return a.first == b.first &&
         std::equal(a.sets.begin(), a.sets.begin() + static_cast<long>(common), b.sets.begin());
}
