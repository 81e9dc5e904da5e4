#include "scansqlite/carving/serial_type.h"

#include <gtest/gtest.h>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Cells;
using hand_made::Feature;
using hand_made::FeaturesOf;

struct DecodeCase {
  uint64_t type;
  int32_t storage_class;
  uint32_t length;
};

TEST(DecodeSerialType, GivesClassAndLength) {
  const DecodeCase cases[] = {
      {0, -2, 0},
      {1, 0, 1},
      {2, 0, 2},
      {3, 0, 3},
      {4, 0, 4},
      {5, 0, 6},
      {6, 0, 8},
      {7, 2, 8},
      {8, 0, 0},
      {9, 0, 0},
      {10, -1, 0},
      {11, -1, 0},
      {12, 4, 0},
      {13, 3, 0},
      {14, 4, 1},
      {15, 3, 1},
      {1000, 4, 494},
      {1001, 3, 494},
      // Longer lengths keep their low 32 bits.
      {(uint64_t{1} << 33) + 12, 4, 0},
      {(uint64_t{1} << 33) + 15, 3, 1},
      {0x7FFFFFFFFFFFFFFF, 3, 0xFFFFFFF9},
  };
  for (const DecodeCase& c : cases) {
    SCOPED_TRACE(c.type);
    SerialTypeCell cell;
    cell.serial_type = c.type;
    DecodeSerialType(cell);
    EXPECT_EQ(cell.storage_class, c.storage_class);
    EXPECT_EQ(cell.payload_length, c.length);
    EXPECT_EQ(cell.is_null, c.type == 0);
    EXPECT_EQ(cell.is_constant, c.type == 8 || c.type == 9);
    EXPECT_EQ(cell.constant_value, c.type == 9 ? 1U : 0U);
  }
}

struct AllowedCase {
  std::vector<int32_t> type_codes;
  // By class integer, real, text, blob: 'y', 'n', or '?' when the candidate has to name the class.
  const char* classes;
};

bool Expected(char verdict, int32_t field_type, int32_t candidate) {
  return verdict == 'y' || (verdict == '?' && candidate == field_type);
}

TEST(IsSerialAllowed, GoesByTheDeclaredTypeAndTheCandidate) {
  const AllowedCase cases[] = {
      {{0, 1, 2, 6, 13}, "yy??"},
      {{3, 5, 7}, "??y?"},
      {{4}, "???y"},
      {{8, 9, 10, 11, 12, 14, 15, 16}, "yyyy"},
      {{17}, "nnnn"},
      {{18, 19, 1000, -1, -2}, "yyyy"},
  };
  const int32_t storage_classes[] = {0, 2, 3, 4};
  for (const AllowedCase& c : cases) {
    for (const int32_t type_code : c.type_codes) {
      for (int32_t field_type = 0; field_type < 4; ++field_type) {
        for (int32_t candidate = -1; candidate < 5; ++candidate) {
          EXPECT_EQ(IsSerialAllowed(type_code, storage_classes[field_type], candidate),
                    Expected(c.classes[field_type], field_type, candidate))
              << "type code " << type_code << ", field type " << field_type << ", candidate "
              << candidate;
        }
      }
    }
  }
}

TEST(IsSerialAllowed, NullAndReservedTypesPassForEveryColumn) {
  for (int32_t type_code = -2; type_code < 20; ++type_code) {
    EXPECT_TRUE(IsSerialAllowed(type_code, -2, -1)) << type_code;
    EXPECT_TRUE(IsSerialAllowed(type_code, -1, -1)) << type_code;
  }
}

struct ClassCase {
  uint64_t serial_type;
  int32_t field_type;  // the class that it counts as
};

TEST(CheckFeatureClasses, ComparesTheClassWithBothCodes) {
  const ClassCase cases[] = {{1, 0},  {2, 0},  {3, 0}, {4, 0},  {5, 0},  {6, 0},  {8, 0}, {9, 0},
                             {10, 0}, {11, 0}, {7, 1}, {13, 2}, {15, 2}, {12, 3}, {14, 3}};
  for (const ClassCase& c : cases) {
    SCOPED_TRACE(c.serial_type);
    for (int32_t code = -1; code < 5; ++code) {
      const bool agrees = code == c.field_type;
      const SerialTypeCells cells = Cells({c.serial_type});
      EXPECT_EQ(CheckFeatureClasses(cells, {FeaturesOf({Feature(0, code, -1, 0, 0)})}), agrees);
      EXPECT_EQ(CheckFeatureClasses(cells, {FeaturesOf({Feature(0, -1, code, 0, 0)})}), agrees);
    }
  }
}

struct NullCase {
  int32_t is_not_null;
  bool passes_as_text;
  bool passes_as_integer;
};

TEST(CheckFeatureClasses, ANullThatMustNotBeCountsAsAnInteger) {
  for (const NullCase& c : {NullCase{0, true, true}, NullCase{-1, true, true},
                            NullCase{1, false, true}, NullCase{2, false, true}}) {
    SCOPED_TRACE(c.is_not_null);
    const SerialTypeCells cells = Cells({0});
    EXPECT_EQ(CheckFeatureClasses(cells, {FeaturesOf({Feature(0, 2, -1, 0, 0, c.is_not_null)})}),
              c.passes_as_text);
    EXPECT_EQ(CheckFeatureClasses(cells, {FeaturesOf({Feature(0, 0, -1, 0, 0, c.is_not_null)})}),
              c.passes_as_integer);
  }
}

TEST(CheckFeatureClasses, AColumnThatTheRecordLacksIsRefused) {
  for (const int32_t column : {1, 2, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_FALSE(CheckFeatureClasses(Cells({1}), {FeaturesOf({Feature(column, 0, -1, 0, 0)})}))
        << column;
  }
}

TEST(CheckFeatureClasses, EveryEntryOfEveryMapCounts) {
  const FeatureMap integer = FeaturesOf({Feature(0, 0, -1, 0, 0)});
  const FeatureMap text = FeaturesOf({Feature(0, 2, -1, 0, 0)});
  const FeatureMap both = FeaturesOf({Feature(0, 0, -1, 0, 0), Feature(1, 2, -1, 0, 0)});
  EXPECT_TRUE(CheckFeatureClasses(Cells({1, 13}), {integer, both}));
  EXPECT_FALSE(CheckFeatureClasses(Cells({1, 13}), {integer, text}));
  EXPECT_FALSE(CheckFeatureClasses(Cells({1, 1}), {integer, both}));
}

TEST(CheckFeatureClasses, WithoutMapsEverythingPasses) {
  EXPECT_TRUE(CheckFeatureClasses(Cells({1, 13}), {}));
  EXPECT_TRUE(CheckFeatureClasses({}, {FeatureMap{}, FeatureMap{}}));
}

}  // namespace
