#include "scansqlite/carving/validate_field.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <stdexcept>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Cell;
using hand_made::Feature;
using hand_made::OneRaw;
using hand_made::Text;

constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();

bool Validate(int32_t code, const FieldFeature& feature, const Bytes& bytes, uint64_t serial_type,
              uint32_t encoding = 1) {
  const SerialTypeCells cells{Cell(serial_type)};
  std::vector<RawValue> values = OneRaw(bytes, cells.front().storage_class);
  return ValidateField(code, feature, encoding, cells, values);
}

Bytes DoubleBytes(double number) {
  const auto bits = std::bit_cast<uint64_t>(number);
  return hand_made::Join({hand_made::U32(static_cast<uint32_t>(bits >> 32)),
                          hand_made::U32(static_cast<uint32_t>(bits))});
}

struct NumberCase {
  const char* name;
  Bytes bytes;
  uint64_t serial_type;
  int64_t min;
  int64_t max;
  int32_t is_not_null;
  bool expected;
};

TEST(ValidateInteger, ComparesTheNumberWithTheRange) {
  const NumberCase cases[] = {
      {"inside", {5}, 1, 0, 9, 0, true},
      {"at the lower end", {5}, 1, 5, 9, 0, true},
      {"at the upper end", {5}, 1, 0, 5, 0, true},
      {"below", {5}, 1, 6, 9, 0, false},
      {"above", {5}, 1, 0, 4, 0, false},
      {"negative", {0xFF}, 1, -1, -1, 0, true},
      {"negative is below 0", {0xFF, 0xFE}, 2, 0, 9, 0, false},
      {"three bytes", {1, 0, 0}, 3, 65536, 65536, 0, true},
      {"six bytes", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFD}, 5, -3, -3, 0, true},
      {"the lowest", {0x80, 0, 0, 0, 0, 0, 0, 0}, 6, kLowest, kLowest, 0, true},
      {"constant 0", {0}, 8, 0, 0, 1, true},
      {"constant 1", {1}, 9, 1, 1, 1, true},
      {"NULL needs no range", {}, 0, 7, 9, 0, true},
      {"NULL where a value must be", {}, 0, 0, 9, 1, false},
      {"NULL with another flag", {}, 0, 7, 9, 2, true},
      {"an empty value that is no NULL is 0", {}, 13, 0, 0, 1, true},
      {"and 0 is tested against the range", {}, 13, 1, 9, 0, false},
  };
  for (const NumberCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Validate(0, Feature(0, 0, -1, c.min, c.max, c.is_not_null), c.bytes, c.serial_type),
              c.expected);
  }
}

TEST(ValidateInteger, TheCellOfAnAliasColumnIsTheNumberZero) {
  SerialTypeCell alias;
  alias.header_bytes = 1;
  alias.storage_class = kClassNull;
  std::vector<RawValue> values = OneRaw({}, kClassNull);
  EXPECT_TRUE(ValidateField(0, Feature(0, 0, -1, 0, 5, 1), 1, {alias}, values));
  EXPECT_FALSE(ValidateField(0, Feature(0, 0, -1, 1, 5), 1, {alias}, values));
}

TEST(ValidateReal, GoesByTheLengthOfTheValue) {
  const NumberCase cases[] = {
      {"a double", DoubleBytes(2.5), 7, 2, 3, 0, true},
      {"below", DoubleBytes(1.99), 7, 2, 3, 0, false},
      {"above", DoubleBytes(3.01), 7, 2, 3, 0, false},
      {"at the end", DoubleBytes(3.0), 7, 2, 3, 0, true},
      {"not a number", DoubleBytes(std::numeric_limits<double>::quiet_NaN()), 7, kLowest, kHighest,
       0, false},
      {"infinite", DoubleBytes(std::numeric_limits<double>::infinity()), 7, kLowest, kHighest, 0,
       false},
      {"one byte is an integer", {0xFE}, 1, -2, -2, 0, true},
      {"two bytes are an integer", {1, 0}, 2, 256, 256, 0, true},
      {"three bytes are 0", {1, 0, 0}, 3, 0, 0, 0, true},
      {"four bytes are a float", {0x40, 0x40, 0, 0}, 4, 3, 3, 0, true},
      {"six bytes are 0", {1, 2, 3, 4, 5, 6}, 5, 0, 0, 0, true},
      {"NULL", {}, 0, 5, 9, 0, true},
      {"NULL where a value must be", {}, 0, 0, 9, 1, false},
  };
  for (const NumberCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Validate(1, Feature(0, 1, -1, c.min, c.max, c.is_not_null), c.bytes, c.serial_type),
              c.expected);
  }
}

TEST(ValidateNumber, AllRangesMustHoldAndWithoutRangesAllPass) {
  FieldFeature feature = Feature(0, 0, -1, 0, 9);
  feature.value_ranges.push_back({5, 20});
  EXPECT_TRUE(Validate(0, feature, {7}, 1));
  EXPECT_FALSE(Validate(0, feature, {3}, 1));
  EXPECT_FALSE(Validate(0, feature, {12}, 1));
  feature.value_ranges.clear();
  EXPECT_TRUE(Validate(0, feature, {0x80, 0}, 2));
  EXPECT_TRUE(Validate(1, feature, DoubleBytes(std::numeric_limits<double>::quiet_NaN()), 7));
}

struct TextCase {
  const char* name;
  Bytes bytes;
  int64_t min;
  int64_t max;
  int32_t is_not_null;
  const char* item_range;
  const char* not_exist;
  bool as_text;
  bool as_blob;
};

TEST(ValidateBytes, ComparesLengthAndBytes) {
  const TextCase cases[] = {
      {"inside", Text("abc"), 1, 5, 1, "", "", true, true},
      {"at the ends", Text("abc"), 3, 3, 0, "", "", true, true},
      {"too long", Text("abcde"), 1, 4, 0, "a~z", "", false, false},
      {"too short", Text("ab"), 3, 9, 0, "", "", false, false},
      {"a negative minimum is very large", Text("ab"), -1, 9, 0, "", "", false, false},
      {"a negative maximum is very large", Text("ab"), 0, -1, 0, "", "", true, true},
      {"all bytes in the set", Text("abc"), 0, 9, 0, "a~c", "", true, true},
      {"a byte outside the set", Text("abd"), 0, 9, 0, "a~c", "", false, false},
      {"a byte in both sets", Text("abc"), 0, 9, 0, "a~c", "b", false, false},
      {"the refused set alone does nothing", Text("abc"), 0, 9, 0, "", "b", true, true},
      {"a byte above 0x7F", {0xC3, 0xA4}, 2, 2, 0, "0xC3,0xA4", "", true, true},
      {"empty", {}, 0, 9, 0, "a~c", "", true, true},
      {"empty where a value must be", {}, 0, 9, 1, "", "", false, false},
      {"an empty text needs no length, an empty blob does", {}, 1, 9, 0, "", "", true, false},
      {"a text of control bytes alone is empty", {1, 2, 3}, 1, 9, 1, "", "", false, true},
      {"a text is measured after it was cleaned", {0x41, 1, 0x42}, 2, 2, 0, "", "", true, false},
  };
  for (const TextCase& c : cases) {
    SCOPED_TRACE(c.name);
    FieldFeature feature = Feature(0, 2, -1, c.min, c.max, c.is_not_null);
    feature.item_range = ParseByteSet(c.item_range);
    feature.item_not_exist_value = ParseByteSet(c.not_exist);
    EXPECT_EQ(Validate(2, feature, c.bytes, hand_made::TextType(c.bytes.size())), c.as_text);
    EXPECT_EQ(Validate(3, feature, c.bytes, hand_made::BlobType(c.bytes.size())), c.as_blob);
  }
}

struct CodeCase {
  int32_t code;
  bool expected;
};

TEST(ValidateField, CodesOutsideTheListAcceptAndNoneRefuses) {
  for (const CodeCase& c : {CodeCase{-1, false}, CodeCase{4, true}, CodeCase{7, true},
                            CodeCase{-2, true}, CodeCase{INT32_MAX, true}}) {
    EXPECT_EQ(Validate(c.code, Feature(0, 0, -1, 9, 1, 1), {5}, 1), c.expected) << c.code;
  }
}

TEST(ValidateField, AColumnWithoutAValueIsEmpty) {
  for (const int32_t column : {-1, 1, 100}) {
    SCOPED_TRACE(column);
    EXPECT_TRUE(Validate(0, Feature(column, 0, -1, 0, 0, 1), {5}, 1));
    EXPECT_FALSE(Validate(0, Feature(column, 0, -1, 1, 9), {5}, 1));
    EXPECT_TRUE(Validate(1, Feature(column, 0, -1, 0, 0, 1), {5}, 1));
    EXPECT_TRUE(Validate(2, Feature(column, 0, -1, 1, 9), {5}, 1));
    EXPECT_FALSE(Validate(2, Feature(column, 0, -1, 0, 9, 1), {5}, 1));
    EXPECT_FALSE(Validate(3, Feature(column, 0, -1, 1, 9), {5}, 1));
    EXPECT_TRUE(Validate(3, Feature(column, 0, -1, 0, 9), {5}, 1));
  }
}

TEST(ValidateText, OtherEncodingsAreLittleEndianUnits) {
  FieldFeature feature = Feature(0, 2, -1, 2, 2, 1);
  feature.item_range = ParseByteSet("a~b");
  const Bytes ab{'a', 0, 'b', 0};
  for (const uint32_t encoding : {0U, 2U, 3U}) {
    EXPECT_TRUE(Validate(2, feature, ab, 21, encoding)) << encoding;
  }
  EXPECT_TRUE(Validate(2, feature, {'a', 0, 'b', 0, 'c'}, 23, 2)) << "an odd last byte is dropped";
  EXPECT_FALSE(Validate(2, feature, {'a'}, 15, 2)) << "one byte is no unit: empty";
  EXPECT_FALSE(Validate(2, feature, {0, 'a', 0, 'b'}, 21, 3)) << "no byte swap";
}

TEST(ValidateText, AnUnpairedSurrogateThrows) {
  const FieldFeature feature = Feature(0, 2, -1, 0, 99);
  const Bytes lone_high{0x3D, 0xD8, 'a', 0};
  const Bytes lone_low{0x00, 0xDE, 'a', 0};
  const Bytes high_at_end{'a', 0, 0x3D, 0xD8};
  for (const Bytes& bytes : {lone_high, lone_low, high_at_end}) {
    EXPECT_THROW(Validate(2, feature, bytes, 21, 2), std::range_error);
  }
  EXPECT_TRUE(Validate(2, feature, {0x3D, 0xD8, 0x00, 0xDE}, 21, 2));
}

TEST(ValidateText, CleansTheValueInPlace) {
  std::vector<RawValue> values = OneRaw({'A', 1, 'B', 2, 'C'}, kClassText);
  EXPECT_TRUE(ValidateField(2, Feature(0, 2, -1, 3, 3), 1, {Cell(23)}, values));
  EXPECT_EQ(hand_made::BytesOf(values[0]), (Bytes{'A', 'B', 'C', 2, 'C'}));
  EXPECT_EQ(CarvedText(values, 0, 1), "ABCC") << "a second reading sees the stale tail";
}

struct RecordCase {
  const char* name;
  FeatureMaps features;
  bool expected;
};

TEST(ValidateRecord, EveryEntryOfEveryMapPassesAsOneOfItsCodes) {
  const FieldFeature integer = Feature(0, 0, -1, 0, 9);
  const FieldFeature none_then_integer = Feature(0, -1, 0, 0, 9);
  const FieldFeature neither = Feature(0, -1, -1, 0, 9);
  const FieldFeature text_or_integer = Feature(0, 2, 0, 5, 5, 1);
  const FieldFeature small = Feature(0, 0, -1, 0, 1);
  const FieldFeature beyond = Feature(3, 2, -1, 1, 9, 1);
  const RecordCase cases[] = {
      {"no maps", {}, true},
      {"empty maps", {{}, {}}, true},
      {"first code", {hand_made::FeaturesOf({integer})}, true},
      {"candidate code", {hand_made::FeaturesOf({none_then_integer})}, true},
      {"candidate after a refusal", {hand_made::FeaturesOf({text_or_integer})}, true},
      {"neither", {hand_made::FeaturesOf({neither})}, false},
      {"second map refuses",
       {hand_made::FeaturesOf({integer}), hand_made::FeaturesOf({small})},
       false},
      {"second entry refuses", {hand_made::FeaturesOf({integer, beyond})}, false},
  };
  for (const RecordCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<RawValue> values = OneRaw({5}, kClassInteger);
    EXPECT_EQ(ValidateRecord(c.features, 1, {Cell(1)}, values), c.expected);
  }
}

}  // namespace
