#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/sqlitecommon/file_data_buf.h"

// One varint that was read from its last byte downward.
struct ReverseVarint {
  uint32_t length = 0;  // bytes taken
  int64_t value = 0;
};

// The head of a table leaf cell, as it stands in front of the serial types:
//   payload size varint | row id varint | header size varint
// so three varints are all that is ever wanted of a downward walk.
inline constexpr size_t kCellHeadVarints = 3;

// Up to three varints, without an allocation: heads are looked for in front of every record.
class HeadVarints {
 public:
  void clear() { size_ = 0; }
  size_t size() const { return size_; }
  void push_back(const ReverseVarint& varint) { varints_[size_++] = varint; }
  const ReverseVarint& operator[](size_t index) const { return varints_[index]; }

 private:
  std::array<ReverseVarint, kCellHeadVarints> varints_;
  size_t size_ = 0;
};

// Bytes held in memory, for the downward walk. A position outside reads as 0, which ends a varint.
struct MemoryBytes {
  const uint8_t* bytes = nullptr;
  uint64_t size = 0;

  uint8_t ReadByte(uint64_t offset) const { return offset < size ? bytes[offset] : 0; }

  // Copies as many of the bytes as there are.
  void CopyTo(uint64_t offset, uint64_t length, uint8_t* out) const {
    if (offset < size) std::memcpy(out, bytes + offset, std::min(length, size - offset));
  }
};

inline uint64_t SourceSize(const MemoryBytes& memory) { return memory.size; }

// Reads varints downward, the last byte of the first one standing at `start`, until `out` holds
// three or `limit` bytes were taken. Varints read this way carry 32 bits: each group is shifted
// in 32-bit arithmetic and the sum of the sign-extended groups is kept, so a longer row id comes
// out as another number. Returns how many bytes were taken.
//
// `Source` gives `uint8_t ReadByte(uint64_t)`, `Varints` is HeadVarints or a vector. A negative
// position becomes a huge offset, which each source answers with 0.
template <typename Source, typename Varints>
int32_t ReadVarintsBackward(Source& source, int32_t start, int32_t limit, Varints& out) {
  int32_t taken = 0;
  int64_t position = start;
  while (out.size() < kCellHeadVarints && taken < limit) {
    ReverseVarint varint;
    uint32_t shift = 0;
    bool goes_on = true;
    while (goes_on) {
      uint32_t byte = source.ReadByte(static_cast<uint64_t>(position));
      ++varint.length;
      ++taken;
      if (varint.length < 9) byte &= 0x7FU;
      varint.value += static_cast<int32_t>(byte << (shift & 31U));
      --position;
      shift += 7;
      const bool high_bit = (source.ReadByte(static_cast<uint64_t>(position)) & 0x80U) != 0;
      goes_on = high_bit && varint.length < 9 && taken < limit;
    }
    out.push_back(varint);
  }
  return taken;
}
