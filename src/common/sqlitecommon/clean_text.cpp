#include "common/sqlitecommon/clean_text.h"

#include <cstring>

#include "common/sqlitecommon/raw_value.h"

namespace {

constexpr uint64_t kTopBits = 0x8080808080808080U;
constexpr uint64_t kEachByte = 0x0101010101010101U;

// Eight bytes of printable ASCII, tab to carriage return not among them.
bool ArePrintable(const uint8_t* bytes) {
  uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  const uint64_t below_blank = word - kEachByte * 0x20;  // borrows only where a byte is below
  const uint64_t above_tilde = word + kEachByte;         // reaches the top bit from 0x7F on
  return ((word | below_blank | above_tilde) & kTopBits) == 0;
}

// The same of so many bytes; written for the compiler to use vectors.
constexpr uint32_t kPrintableBlock = 32;
bool IsPrintableBlock(const uint8_t* bytes) {
  uint8_t others = 0;
  for (uint32_t i = 0; i < kPrintableBlock; ++i) {
    others |= static_cast<uint8_t>(bytes[i] - 0x20) > 0x5E ? 1 : 0;
  }
  return others == 0;
}

// The length of a sequence of two to four bytes that is surely clean; 0 leaves the answer open.
uint32_t CleanSequence(const uint8_t* bytes, uint32_t left) {
  constexpr uint32_t kLastControl = 0x9F;
  constexpr uint32_t kFirstSpecial = 0xFFF0;
  constexpr uint32_t kLastSpecial = 0xFFFF;
  const uint32_t lead = bytes[0];
  const auto follows = [bytes](uint32_t i) { return (bytes[i] & 0xC0U) == 0x80U; };
  const auto bits = [bytes](uint32_t i) { return bytes[i] & 0x3FU; };
  if ((lead & 0xE0U) == 0xC0U && left >= 2) {
    return follows(1) && ((lead & 0x1FU) << 6 | bits(1)) > kLastControl ? 2 : 0;
  }
  if ((lead & 0xF0U) == 0xE0U && left >= 3) {
    const uint32_t point = (lead & 0x0FU) << 12 | bits(1) << 6 | bits(2);
    return follows(1) && follows(2) && point > kLastControl && point < kFirstSpecial ? 3 : 0;
  }
  if ((lead & 0xF8U) == 0xF0U && left >= 4) {
    const uint32_t point = (lead & 0x07U) << 18 | bits(1) << 12;
    return follows(1) && follows(2) && follows(3) && point > kLastSpecial ? 4 : 0;
  }
  return 0;
}

}  // namespace

bool IsCleanText(const uint8_t* bytes, uint32_t length) {
  uint32_t at = 0;
  while (at < length) {
    if (at + kPrintableBlock <= length && IsPrintableBlock(bytes + at)) {
      at += kPrintableBlock;
    } else if (at + 8 <= length && ArePrintable(bytes + at)) {
      at += 8;
    } else if (at + 8 > length && length >= 8 && ArePrintable(bytes + length - 8)) {
      return true;
    } else if (bytes[at] >= 0x20 && bytes[at] < 0x7F) {
      ++at;
    } else if (const uint32_t clean = CleanSequence(bytes + at, length - at); clean != 0) {
      at += clean;
    } else if (Utf8BadSequenceLength(bytes + at, length - at) != 0) {
      return false;
    } else {
      at += Utf8SequenceLength(bytes[at]);
    }
  }
  return true;
}
