#include "common/sqlitecommon/clean_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/sqlitecommon/raw_value.h"
#include "support/dice.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Sequence by sequence, as a reading goes that drops what is refused.
bool KeepsEveryByte(const Bytes& bytes) {
  const auto length = static_cast<uint32_t>(bytes.size());
  for (uint32_t at = 0; at < length;) {
    if (Utf8BadSequenceLength(bytes.data() + at, length - at) != 0) return false;
    at += Utf8SequenceLength(bytes[at]);
  }
  return true;
}

// Texts of several scripts, most of them with a fault somewhere.
Bytes SomeText(Dice& dice) {
  static const std::vector<std::string> kParts = {"a",
                                                  "plain words ",
                                                  "\n",
                                                  "\t",
                                                  "ä",
                                                  "я",
                                                  "写",
                                                  "😀",
                                                  "\x01",
                                                  "\x1F",
                                                  "\x7F",
                                                  "\xC2\x85",
                                                  "\xEF\xBF\xBF",
                                                  "\xC0\x80",
                                                  "\xE5\x86",
                                                  "\xFF"};
  const uint64_t good_parts = 8;
  Bytes bytes;
  const uint64_t count = dice.Below(40);
  const uint64_t fault = dice.Below(60);
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t first = i == fault ? good_parts : 0;
    const uint64_t choice =
        first + dice.Below(i == fault ? kParts.size() - good_parts : good_parts);
    bytes.insert(bytes.end(), kParts[choice].begin(), kParts[choice].end());
  }
  return bytes;
}

TEST(CleanTextTest, EqualsAReadingSequenceBySequence) {
  size_t clean = 0;
  size_t unclean = 0;
  for (uint64_t seed = 1; seed <= 20000; ++seed) {
    Dice dice(seed);
    Bytes bytes = SomeText(dice);
    const bool expected = KeepsEveryByte(bytes);
    ASSERT_EQ(IsCleanText(bytes.data(), static_cast<uint32_t>(bytes.size())), expected)
        << "seed " << seed;
    (expected ? clean : unclean) += 1;
  }
  EXPECT_GT(clean, 2000U);
  EXPECT_GT(unclean, 2000U);
}

TEST(CleanTextTest, EqualsItOnRandomBytes) {
  for (uint64_t seed = 1; seed <= 20000; ++seed) {
    Dice dice(seed);
    Bytes bytes(dice.Below(12));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(dice.Below(256));
    ASSERT_EQ(IsCleanText(bytes.data(), static_cast<uint32_t>(bytes.size())), KeepsEveryByte(bytes))
        << "seed " << seed;
  }
}

// A fault at each place of texts of every length around the blocks that are looked at together.
TEST(CleanTextTest, OneFaultAtAnyPlaceIsSeen) {
  const Bytes faults = {0x00, 0x08, 0x0E, 0x1F, 0x7F, 0x80, 0xC3, 0xFF};
  const Bytes others = {0x09, 0x0D, 0x20, 0x7E};
  for (size_t length = 1; length <= 100; ++length) {
    Bytes bytes(length, 'x');
    EXPECT_TRUE(IsCleanText(bytes.data(), static_cast<uint32_t>(length)));
    for (size_t at = 0; at < length; ++at) {
      for (const uint8_t fault : faults) {
        bytes[at] = fault;
        EXPECT_FALSE(IsCleanText(bytes.data(), static_cast<uint32_t>(length)))
            << length << " at " << at << ": " << int{fault};
      }
      for (const uint8_t other : others) {
        bytes[at] = other;
        EXPECT_TRUE(IsCleanText(bytes.data(), static_cast<uint32_t>(length)));
      }
      bytes[at] = 'x';
    }
  }
}

}  // namespace
