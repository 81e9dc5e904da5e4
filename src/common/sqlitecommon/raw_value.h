#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// One column of a carved record. `bytes` is null for a value of length 0.
struct RawValue {
  std::unique_ptr<uint8_t[]> bytes;
  int32_t length = 0;
  int32_t storage_class = 0;  // the codes of SerialTypeCell

  bool IsEmpty() const { return length == 0 || bytes == nullptr; }
};

// The value at `index`, or null when there is none.
const RawValue* ValueAt(const std::vector<RawValue>& values, int32_t index);

// Tests the UTF-8 sequence at `bytes`, of which `remaining` bytes are there. 0 when it may stay,
// else the number of bytes to drop. Control characters and the specials U+FFF0 to U+FFFF are
// dropped like broken sequences.
uint32_t Utf8BadSequenceLength(const uint8_t* bytes, uint32_t remaining);

// The bytes of the UTF-8 sequence that begins with `lead`; 1 for a byte that begins none.
uint32_t Utf8SequenceLength(uint8_t lead);

// The value as UTF-8 text without the sequences that Utf8BadSequenceLength refuses; the empty
// text for an absent or empty value. Kept bytes move down inside the value's own buffer, whose
// length stays: a second reading sees the stale tail behind them.
std::string RawValueAsText(std::vector<RawValue>& values, int32_t index);

// The numbers of RawValueAsInteger and RawValueAsReal for `length` bytes, of which there is at
// least one.
int64_t BytesAsInteger(const uint8_t* bytes, uint32_t length);
double BytesAsReal(const uint8_t* bytes, uint32_t length);

// The value as a number by its length alone: 1 and 2 bytes are integers, 4 an IEEE 754 single, 8
// a double, all big-endian; any other length, an absent and an empty value give 0.0.
double RawValueAsReal(const std::vector<RawValue>& values, int32_t index);

// The big-endian two's complement number of all the value's bytes, wrapping at 64 bits; 0 for an
// absent or empty value.
int64_t RawValueAsInteger(const std::vector<RawValue>& values, int32_t index);

// The value read as little-endian UTF-16, an odd last byte dropped, in UTF-8. Throws
// std::range_error on an unpaired surrogate.
std::string RawValueAsUtf16Text(const std::vector<RawValue>& values, int32_t index);
