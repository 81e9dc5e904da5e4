// Conversion between UTF-8 and UTF-16.
#include "common/common/text_convert.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace {

using namespace std::string_literals;

TEST(TextConvertTest, BothWaysGiveTheSameText) {
  const struct {
    std::string narrow;
    std::u16string wide;
  } kCases[] = {
      {"", u""},
      {"plain", u"plain"},
      {"\x7F\xC2\x80", u"\u007F\u0080"s},
      {"\xDF\xBF\xE0\xA0\x80", u"\u07FF\u0800"},
      {"写真", u"写真"},
      {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
      {"\xEF\xBF\xBD", u"\uFFFD"},
      {"\xF0\x90\x80\x80", u"\U00010000"},
      {"\xF0\x9F\x98\x80", u"\U0001F600"},
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
      {"a\0b"s, u"a\0b"s},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.narrow);
    EXPECT_EQ(Utf8ToWide(row.narrow), row.wide);
    EXPECT_EQ(WideToUtf8(row.wide), row.narrow);
  }
}

void ExpectBadConversion(const std::function<void()>& convert) {
  try {
    convert();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::range_error& error) {
    EXPECT_STREQ(error.what(), "bad conversion");
  }
}

TEST(TextConvertTest, BytesThatAreNoUtf8AreRefused) {
  const struct {
    const char* name;
    std::string text;
  } kCases[] = {
      {"lone following byte", "a\x80"},
      {"no lead byte", "\xFF"},
      {"cut sequence of two", "\xC3"},
      {"cut sequence of three", "\xE5\x86"},
      {"cut sequence of four", "\xF0\x9F\x98"},
      {"following byte missing",
       "\xE5"
       "ab"},
      {"overlong form", "\xC0\xAF"},
      {"encoded surrogate", "\xED\xA0\x80"},
      {"past the last code point", "\xF4\x90\x80\x80"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    ExpectBadConversion([&row] { Utf8ToWide(row.text); });
  }
}

TEST(TextConvertTest, UnpairedSurrogatesAreRefused) {
  const struct {
    const char* name;
    std::u16string text;
  } kCases[] = {
      {"high before a letter", {0xD83D, u'a'}},         {"high at the end", {u'a', 0xD83D}},
      {"high before a high", {0xD83D, 0xD83D, 0xDE00}}, {"low alone", {0xDE00}},
      {"low before a high", {0xDE00, 0xD83D}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    ExpectBadConversion([&row] { WideToUtf8(row.text); });
  }
}

}  // namespace
