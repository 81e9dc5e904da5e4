#include "scansqlite/carving/carved_row.h"

#include <gtest/gtest.h>

#include <bit>
#include <optional>
#include <stdexcept>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::OneRaw;
using hand_made::ResultField;
using hand_made::ResultFields;

// What one field became: "absent", or the map that it stands in and its value.
std::string Describe(const RowValue& row, const std::string& name) {
  std::string found;
  if (const auto at = row.text_values.find(name); at != row.text_values.end()) {
    found += "text " + at->second;
  }
  if (const auto at = row.integer_values.find(name); at != row.integer_values.end()) {
    found += "integer " + std::to_string(at->second);
  }
  if (const auto at = row.real_values.find(name); at != row.real_values.end()) {
    found += "real " + std::to_string(at->second);
  }
  if (const auto at = row.blob_values.find(name); at != row.blob_values.end()) {
    found += "blob " + std::string(at->second.begin(), at->second.end());
  }
  return found.empty() ? "absent" : found;
}

std::string Build(int32_t field_type, std::vector<RawValue> values, uint32_t encoding = 1,
                  int32_t column = 0) {
  RowValue row;
  if (!BuildCarvedRow(values, {}, ResultFields({ResultField("f", field_type, column)}), encoding,
                      row)) {
    return "dropped";
  }
  return Describe(row, "f");
}

constexpr int32_t kIntegerField = 0;
constexpr int32_t kRealField = 1;
constexpr int32_t kTextField = 2;
constexpr int32_t kBlobField = 3;

struct RowCase {
  const char* name;
  int32_t field_type;
  Bytes bytes;
  int32_t storage_class;
  const char* expected;
};

const Bytes kTwoAndAHalf{0x40, 0x04, 0, 0, 0, 0, 0, 0};

TEST(BuildCarvedRow, MapsEachKindOfValueOntoEachKindOfField) {
  const RowCase cases[] = {
      {"integer of one byte", kIntegerField, {0xFE}, 0, "integer -2"},
      {"integer of three bytes", kIntegerField, {1, 0, 1}, 0, "integer 65537"},
      {"integer of six bytes", kIntegerField, {0, 0, 0, 1, 0, 0}, 0, "integer 65536"},
      {"text in an integer field", kIntegerField, {'A'}, 3, "integer 65"},
      {"real in an integer field", kIntegerField, {1, 0}, 2, "integer 256"},
      {"constant in an integer field", kIntegerField, {1}, -1, "integer 1"},
      {"empty text in an integer field", kIntegerField, {}, 3, "integer 0"},
      {"NULL in an integer field", kIntegerField, {}, -2, "absent"},
      {"empty blob in an integer field", kIntegerField, {}, 4, "absent"},

      {"real", kRealField, kTwoAndAHalf, 2, "real 2.500000"},
      {"class 1 counts as real", kRealField, kTwoAndAHalf, 1, "real 2.500000"},
      {"class 8 counts as real", kRealField, kTwoAndAHalf, 8, "real 2.500000"},
      {"an integer stays an integer", kRealField, {1, 0, 0}, 0, "integer 65536"},
      {"of four bytes, too", kRealField, {0x40, 0x40, 0, 0}, 0, "integer 1077936128"},
      {"of six bytes, too", kRealField, {0, 0, 0, 0, 1, 0}, 0, "integer 256"},
      {"constant in a real field", kRealField, {1}, -1, "absent"},
      {"text in a real field", kRealField, {'1'}, 3, "absent"},
      {"empty text in a real field", kRealField, {}, 3, "absent"},
      {"blob in a real field", kRealField, {'1'}, 4, "absent"},
      {"NULL in a real field", kRealField, {}, -2, "absent"},

      {"text", kTextField, {'h', 'i'}, 3, "text hi"},
      {"text is cleaned", kTextField, {'h', 1, 0xFF, 'i'}, 3, "text hi"},
      {"empty text", kTextField, {}, 3, "text "},
      {"class 5 counts as text", kTextField, {}, 5, "text "},
      {"class 7 counts as text", kTextField, {}, 7, "text "},
      {"blob in a text field", kTextField, {'h', 'i'}, 4, "blob hi"},
      {"empty blob in a text field", kTextField, {}, 4, "absent"},
      {"integer in a text field", kTextField, {'A'}, 0, "text A"},
      {"constant in a text field", kTextField, {1}, -1, "text "},
      {"NULL in a text field", kTextField, {}, -2, "absent"},

      {"blob", kBlobField, {'h', 'i'}, 4, "blob hi"},
      {"text in a blob field", kBlobField, {'h', 'i'}, 3, "blob hi"},
      {"empty text in a blob field", kBlobField, {}, 3, "blob "},
      {"empty blob", kBlobField, {}, 4, "absent"},
      {"NULL in a blob field", kBlobField, {}, -2, "absent"},

      {"unknown type", 4, {1}, 0, "dropped"},
      {"no type", -1, {1}, 0, "dropped"},
      {"unknown type of an empty value stays out before it is looked at", 4, {}, -2, "absent"},
      {"unknown type of an empty text", 4, {}, 3, "dropped"},
  };
  for (const RowCase& c : cases) {
    EXPECT_EQ(Build(c.field_type, OneRaw(c.bytes, c.storage_class)), c.expected) << c.name;
  }
}

struct AbsentCase {
  int32_t field_type;
  const char* expected;
};

TEST(BuildCarvedRow, AColumnBeyondAShortRecord) {
  const AbsentCase cases[] = {{kIntegerField, "integer 0"},
                              {kRealField, "absent"},
                              {kTextField, "text "},
                              {kBlobField, "blob "},
                              {9, "dropped"}};
  for (const AbsentCase& c : cases) {
    for (const int32_t column : {1, 50, -1}) {
      EXPECT_EQ(Build(c.field_type, OneRaw({7}, 0), 1, column), c.expected) << c.field_type;
      EXPECT_EQ(Build(c.field_type, OneRaw({7}, 0), 2, column), c.expected) << c.field_type;
    }
  }
}

TEST(BuildCarvedRow, OtherEncodingsAreLittleEndianUnits) {
  EXPECT_EQ(Build(kTextField, OneRaw({0xE4, 0, 'b', 0, 'c'}, 3), 2),
            "text \xC3\xA4"
            "b");
  EXPECT_EQ(Build(kTextField, OneRaw({1}, -1), 3), "text ");
  EXPECT_THROW(Build(kTextField, OneRaw({0, 0xDE}, 3), 2), std::range_error);
}

TEST(BuildCarvedRow, ARowIdFieldTakesTheRowIdOfTheHead) {
  std::vector<RawValue> values = OneRaw({7}, 0);
  CarvedRecord record;
  const ResultFieldMap fields =
      ResultFields({ResultField("id", 9, 0, 1), ResultField("other", kIntegerField, 0, 2)});
  RowValue row;
  EXPECT_TRUE(BuildCarvedRow(values, record, fields, 1, row));
  EXPECT_EQ(Describe(row, "id"), "integer 0") << "without a head";
  EXPECT_EQ(Describe(row, "other"), "integer 7") << "only 1 marks a row id field";
  record.row_id = -12;
  row = RowValue();
  EXPECT_TRUE(BuildCarvedRow(values, record, fields, 1, row));
  EXPECT_EQ(Describe(row, "id"), "integer -12");
}

TEST(BuildCarvedRow, OneUnknownTypeDropsTheRowAfterAllFields) {
  std::vector<RawValue> values = OneRaw({7}, 0);
  RowValue row;
  EXPECT_FALSE(BuildCarvedRow(
      values, {}, ResultFields({ResultField("bad", 5, 0), ResultField("good", kIntegerField, 0)}),
      1, row));
  EXPECT_EQ(Describe(row, "good"), "integer 7");
}

TEST(BuildCarvedRow, FieldsOnOneValueAreReadInOrder) {
  std::vector<RawValue> values = OneRaw({'A', 1, 'B', 2, 'C'}, 3);
  RowValue row;
  ASSERT_TRUE(BuildCarvedRow(
      values, {},
      ResultFields({ResultField("first", kTextField, 0), ResultField("second", kTextField, 0)}), 1,
      row));
  EXPECT_EQ(Describe(row, "first"), "text ABC");
  EXPECT_EQ(Describe(row, "second"), "text ABCC") << "the first reading moved the bytes";
}

}  // namespace
