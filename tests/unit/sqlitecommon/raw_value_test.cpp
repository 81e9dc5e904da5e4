// Carved values read as text and as numbers.
#include "common/sqlitecommon/raw_value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

RawValue MakeValue(const Bytes& bytes, int32_t storage_class = 0) {
  RawValue value;
  value.length = static_cast<int32_t>(bytes.size());
  value.storage_class = storage_class;
  if (bytes.empty()) return value;
  value.bytes = std::make_unique<uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), value.bytes.get());
  return value;
}

std::vector<RawValue> MakeValues(const Bytes& bytes, int32_t storage_class = 0) {
  std::vector<RawValue> values;
  values.push_back(MakeValue(bytes, storage_class));
  return values;
}

Bytes BytesOf(const RawValue& value) {
  return {value.bytes.get(), value.bytes.get() + value.length};
}

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

TEST(Utf8BadSequenceTest, LengthToDropByLeadByteAndWhatFollows) {
  const struct {
    const char* name;
    Bytes bytes;
    uint32_t length;
  } kCases[] = {
      {"letter", {0x41}, 0},
      {"two bytes", {0xC3, 0xA4}, 0},
      {"three bytes", {0xE5, 0x86, 0x99}, 0},
      {"four bytes", {0xF0, 0x9F, 0x98, 0x80}, 0},
      {"lone following byte", {0x80}, 1},
      {"last following byte", {0xBF, 0x41}, 1},
      {"no lead byte, low", {0xF8, 0x80, 0x80, 0x80, 0x80}, 1},
      {"no lead byte, high", {0xFF, 0x41}, 1},
      {"cut of two", {0xC3}, 1},
      {"cut of three", {0xE5, 0x86}, 2},
      {"cut of four", {0xF0, 0x9F, 0x98}, 3},
      {"cut and broken", {0xF0, 0x41}, 2},
      {"second byte too low", {0xE5, 0x7F, 0x99}, 3},
      {"second byte too high", {0xE5, 0xC0, 0x99}, 3},
      {"last byte broken", {0xE5, 0x86, 0x41}, 3},
      {"only byte after the lead broken", {0xC3, 0x41}, 2},
      {"third of four broken", {0xF0, 0x9F, 0x41, 0x80}, 4},
      {"overlong zero", {0xC0, 0x80}, 2},
      {"overlong letter passes", {0xC1, 0x81}, 0},
      {"overlong control character", {0xE0, 0x80, 0x8E}, 3},
      {"surrogate passes", {0xED, 0xA0, 0x80}, 0},
      {"past the last code point passes", {0xF7, 0xBF, 0xBF, 0xBF}, 0},
      {"last before the specials", {0xEF, 0xBF, 0xAF}, 0},
      {"first special", {0xEF, 0xBF, 0xB0}, 3},
      {"replacement character", {0xEF, 0xBF, 0xBD}, 3},
      {"last special", {0xEF, 0xBF, 0xBF}, 3},
      {"first behind the specials", {0xF0, 0x90, 0x80, 0x80}, 0},
      {"first behind the upper controls", {0xC2, 0xA0}, 0},
      {"last of the upper controls", {0xC2, 0x9F}, 2},
      {"first of two bytes", {0xC2, 0x80}, 2},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Utf8BadSequenceLength(row.bytes.data(), static_cast<uint32_t>(row.bytes.size())),
              row.length);
  }
}

TEST(Utf8BadSequenceTest, ControlCharactersOfOneByteAreDroppedButForWhiteSpace) {
  for (int byte = 0; byte < 128; ++byte) {
    const auto value = static_cast<uint8_t>(byte);
    const bool stays = (byte >= 9 && byte <= 13) || (byte >= 32 && byte <= 126);
    EXPECT_EQ(Utf8BadSequenceLength(&value, 1), stays ? 0U : 1U) << byte;
  }
}

TEST(RawValueTextTest, BadSequencesAreRemoved) {
  const struct {
    const char* name;
    Bytes bytes;
    std::string text;
  } kCases[] = {
      {"nothing", {}, ""},
      {"letters", {0x41, 0x42}, "AB"},
      {"control character between", {0x41, 0x01, 0x42}, "AB"},
      {"control character first", {0x00, 0x41}, "A"},
      {"control character last", {0x41, 0x7F}, "A"},
      {"nothing stays", {0x00, 0x01, 0xFF}, ""},
      {"white space stays", {0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x20}, "\t\n\v\f\r "},
      {"several scripts", BytesOf("ä写\xF0\x9F\x98\x80z"), "ä写\xF0\x9F\x98\x80z"},
      {"cut at the end", {0x41, 0xE5, 0x86}, "A"},
      {"a broken sequence takes good bytes with it", {0xE5, 0x41, 0x42, 0x43}, "C"},
      {"between long sequences", {0xE5, 0x86, 0x99, 0xFF, 0xE7, 0x9C, 0x9F}, "写真"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    std::vector<RawValue> values = MakeValues(row.bytes);
    EXPECT_EQ(RawValueAsText(values, 0), row.text);
    EXPECT_EQ(values[0].length, static_cast<int32_t>(row.bytes.size()));
  }
}

TEST(RawValueTextTest, KeptBytesMoveDownAndTheLengthStays) {
  std::vector<RawValue> values = MakeValues({0x41, 0x01, 0x42});
  EXPECT_EQ(RawValueAsText(values, 0), "AB");
  EXPECT_EQ(values[0].length, 3);
  EXPECT_EQ(BytesOf(values[0]), (Bytes{0x41, 0x42, 0x42}));
}

TEST(RawValueTextTest, SecondReadingSeesTheStaleTail) {
  std::vector<RawValue> values = MakeValues({0x41, 0x01, 0x42});
  EXPECT_EQ(RawValueAsText(values, 0), "AB");
  EXPECT_EQ(RawValueAsText(values, 0), "ABB");
  EXPECT_EQ(RawValueAsText(values, 0), "ABB");
}

TEST(RawValueTextTest, IndexOutOfRangeAndEmptyValuesGiveNothing) {
  std::vector<RawValue> values = MakeValues({0x41});
  values.push_back(MakeValue({}));
  values.push_back(RawValue{nullptr, 5, 0});
  for (const int32_t index :
       {-1, 1, 2, 3, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(RawValueAsText(values, index), "");
    EXPECT_EQ(RawValueAsReal(values, index), 0.0);
    EXPECT_EQ(RawValueAsInteger(values, index), 0);
    EXPECT_EQ(RawValueAsUtf16Text(values, index), "");
  }
  EXPECT_EQ(RawValueAsText(values, 0), "A");
}

TEST(RawValueRealTest, LengthAloneDecides) {
  const struct {
    const char* name;
    Bytes bytes;
    double number;
  } kCases[] = {
      {"nothing", {}, 0.0},
      {"one byte", {0x7F}, 127.0},
      {"one negative byte", {0xFF}, -1.0},
      {"two bytes", {0x01, 0x02}, 258.0},
      {"two negative bytes", {0x80, 0x00}, -32768.0},
      {"three bytes", {0x01, 0x02, 0x03}, 0.0},
      {"four bytes are a single", {0x3F, 0xC0, 0x00, 0x00}, 1.5},
      {"a small integer in four bytes is hardly anything", {0x00, 0x00, 0x00, 0x01}, 0x1p-149},
      {"five bytes", {1, 2, 3, 4, 5}, 0.0},
      {"six bytes", {1, 2, 3, 4, 5, 6}, 0.0},
      {"seven bytes", {1, 2, 3, 4, 5, 6, 7}, 0.0},
      {"eight bytes are a double", {0xC0, 0x04, 0, 0, 0, 0, 0, 0}, -2.5},
      {"an integer in eight bytes is hardly anything", {0, 0, 0, 0, 0, 0, 0, 1}, 0x1p-1074},
      {"nine bytes", {1, 2, 3, 4, 5, 6, 7, 8, 9}, 0.0},
  };
  for (const auto& row : kCases) {
    for (const int32_t storage_class : {0, 1, 2, 3}) {
      SCOPED_TRACE(row.name);
      EXPECT_EQ(RawValueAsReal(MakeValues(row.bytes, storage_class), 0), row.number);
    }
  }
  EXPECT_TRUE(std::isnan(RawValueAsReal(MakeValues({0x7F, 0xC0, 0, 0}), 0)));
  EXPECT_TRUE(std::isinf(RawValueAsReal(MakeValues({0x7F, 0xF0, 0, 0, 0, 0, 0, 0}), 0)));
}

TEST(RawValueIntegerTest, AllBytesAreOneSignedNumber) {
  const struct {
    Bytes bytes;
    int64_t number;
  } kCases[] = {
      {{}, 0},
      {{0x05}, 5},
      {{0x80}, -128},
      {{0xFF, 0xFE}, -2},
      {{0x01, 0x00, 0x00}, 65536},
      {{0xFF, 0xFF, 0xFF}, -1},
      {{0x7F, 0xFF, 0xFF, 0xFF}, 2147483647},
      {{0x80, 0, 0, 0, 0, 0}, -140737488355328},
      {{0x80, 0, 0, 0, 0, 0, 0, 0}, std::numeric_limits<int64_t>::min()},
      {{0x01, 0, 0, 0, 0, 0, 0, 0, 0x07}, 7},
  };
  for (const auto& row : kCases) EXPECT_EQ(RawValueAsInteger(MakeValues(row.bytes), 0), row.number);
}

TEST(RawValueUtf16Test, LowByteComesFirstAndAnOddByteIsDropped) {
  EXPECT_EQ(RawValueAsUtf16Text(MakeValues({0x41, 0x00, 0x99, 0x51}), 0), "A写");
  EXPECT_EQ(RawValueAsUtf16Text(MakeValues({0x3D, 0xD8, 0x00, 0xDE}), 0), "\xF0\x9F\x98\x80");
  EXPECT_EQ(RawValueAsUtf16Text(MakeValues({0x41, 0x00, 0x42}), 0), "A");
  EXPECT_EQ(RawValueAsUtf16Text(MakeValues({0x41}), 0), "");
  EXPECT_THROW(RawValueAsUtf16Text(MakeValues({0x3D, 0xD8}), 0), std::range_error);
}

}  // namespace
