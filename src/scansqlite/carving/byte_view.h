#pragma once

#include <cstdint>

// A piece of the file or of the log that is in memory, with what stands around the positions under
// test. Offsets are those of the whole.
struct ByteView {
  const uint8_t* bytes = nullptr;
  uint64_t begin = 0;
  uint64_t end = 0;
  uint64_t source_size = 0;

  bool Holds(uint64_t from, uint64_t to) const { return begin <= from && to <= end; }
  const uint8_t* At(uint64_t offset) const { return bytes + (offset - begin); }

  // For the downward walk in front of a record, which stays inside the view.
  uint8_t ReadByte(uint64_t offset) const {
    return begin <= offset && offset < end ? bytes[offset - begin] : 0;
  }
};
