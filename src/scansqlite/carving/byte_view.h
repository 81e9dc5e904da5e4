#pragma once

#include <cstdint>

// A piece of the file or of the log that is in memory, with what stands around the positions under
// test. Offsets are those of the whole.
struct ByteView {
  const uint8_t* bytes = nullptr;
  uint64_t begin = 0;
  uint64_t end = 0;
  uint64_t source_size = 0;
  // The size, which counts in 32 bits where it limits values, is so small that values of one-byte
  // serial types can exceed it.
  bool has_tiny_limit = false;

  ByteView() = default;
  ByteView(const uint8_t* from, uint64_t first, uint64_t last, uint64_t size)
      : bytes(from), begin(first), end(last), source_size(size) {
    has_tiny_limit = static_cast<uint32_t>(size) <= kLongestShortValue;
  }

  // The text or blob of the largest serial type that takes one byte.
  static constexpr uint32_t kLongestShortValue = 57;

  bool Holds(uint64_t from, uint64_t to) const { return begin <= from && to <= end; }
  const uint8_t* At(uint64_t offset) const { return bytes + (offset - begin); }

  // For the downward walk in front of a record, which stays inside the view.
  uint8_t ReadByte(uint64_t offset) const {
    return begin <= offset && offset < end ? bytes[offset - begin] : 0;
  }
};
