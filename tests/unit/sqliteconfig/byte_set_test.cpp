// The text form of byte sets, with what malformed items give.
#include "sqliteconfig/byte_set.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Members(const ByteSet& set) {
  std::string members;
  for (unsigned byte = 0; byte < 256; ++byte) {
    if (set.Contains(static_cast<uint8_t>(byte))) members += static_cast<char>(byte);
  }
  return members;
}

std::string Range(int first, int last) {
  std::string bytes;
  for (int byte = first; byte <= last; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

TEST(ByteSetTest, TextsAndTheirMembers) {
  const std::string zero(1, '\0');
  const struct {
    std::string text;
    std::string members;  // ascending
  } kCases[] = {
      {"", ""},
      // Single bytes.
      {"a", "a"},
      {"'a'", "a"},
      {"b,a", "ab"},
      {"ab", "b"},
      {"'ab'", "b"},
      {"a,,b", "ab"},
      {",a", zero + "a"},
      {"a,", "a"},
      {",", zero},
      {" ", " "},
      {"a, b", "ab"},
      {"'", zero},
      {"''", zero},
      {"','", ","},
      {"'~'", "~"},
      {"'0'", "0"},
      {"'a", "a"},
      {"a','b", "b"},
      {"1", "1"},
      {"a0", zero},
      // Ranges.
      {"a~z", "abcdefghijklmnopqrstuvwxyz"},
      {"'a'~'z'", "abcdefghijklmnopqrstuvwxyz"},
      {"'0'~'9','a'~'f'", "0123456789abcdef"},
      {"c~c", "c"},
      {"z~a", ""},
      {"~c", Range(0, 'c')},
      {"a~", ""},
      {"~", zero},
      {"a~c~d", "abcd"},
      {"a~cd", "abcd"},
      {"a~c,x", "abcx"},
      {"a~c,", "abc"},
      {"a~c,~e", "abcde"},
      {"a~c,~", "abc"},
      {"0~9", Range(0, '9')},
      {"0x30~0x39", Range(0, '9')},
      {"a,0x30~c", "abc"},
      {"'\x80'~\xFF", Range(0x80, 0xFF)},
      {"\xFE~\xFF,a", "a\xFE\xFF"},
      // Hexadecimal bytes.
      {"0x41", "A"},
      {"0X41", "A"},
      {"0x6a,0x6B", "jk"},
      {"0x6A,0X6b", "jk"},
      {"0x27", "'"},
      {"0xFF", "\xFF"},
      {"0xf", "\x0F"},
      {"0x141", "A"},
      {"0x00041", "A"},
      {"0x041", "A"},
      {"0", zero},
      {"00", zero},
      {"0x", zero},
      {"0x4g", zero},
      {"041", zero},
      {"0y41", zero},
      {"0x41,", zero + "A"},
      {"x,0x41,", "Ax"},
      {"'x',0x41,", "Ax"},
      {"a0x41", "A"},
      {"0'x41'", "A"},
      {"'0x41'", "1"},
      {"0x4'1'", "A"},
      // The digits of an item that became a range are not given up.
      {"0x30~5,0x41", zero + Range(1, '5')},
      {"0x30~5,0,a", zero + Range(1, '5') + "a"},
      // Of a character of several bytes the last one counts.
      {"\xC3\xA4", "\xA4"},
      {"'\xE5\x86\x99'", "\x99"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(Members(ParseByteSet(row.text)), row.members);
    EXPECT_EQ(ParseByteSet(row.text).size(), row.members.size());
    EXPECT_EQ(ParseByteSet(row.text).empty(), row.members.empty());
  }
}

}  // namespace
