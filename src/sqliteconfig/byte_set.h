#pragma once

#include <bitset>
#include <cstdint>
#include <string>

// A set of byte values. The empty set means that no set was given.
class ByteSet {
 public:
  void Add(uint8_t byte) { bytes_.set(byte); }
  bool Contains(uint8_t byte) const { return bytes_[byte]; }
  bool empty() const { return bytes_.none(); }
  size_t size() const { return bytes_.count(); }
  bool operator==(const ByteSet& other) const = default;

 private:
  std::bitset<256> bytes_;
};

// Reads the text of a byte set: items between commas, each a byte (a or 'a'), a range (a~z or
// 'a'~'z') or a hexadecimal byte (0x41). A bare 0 starts a hexadecimal item. There is no failing
// input; docs/kept_as_is.md tells what malformed items give.
ByteSet ParseByteSet(const std::string& text);
