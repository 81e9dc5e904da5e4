#include "scansqlite/carving/parse_serial_types.h"

#include <gtest/gtest.h>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Column;

struct Parsed {
  bool complete = false;
  std::vector<uint64_t> types;
  std::vector<uint32_t> widths;

  bool operator==(const Parsed&) const = default;
};

void PrintTo(const Parsed& parsed, std::ostream* out) {
  *out << (parsed.complete ? "complete" : "incomplete");
  for (const uint64_t type : parsed.types) *out << ' ' << type;
}

Parsed Describe(bool complete, const SerialTypeCells& cells) {
  Parsed parsed;
  parsed.complete = complete;
  for (const SerialTypeCell& cell : cells) {
    parsed.types.push_back(cell.serial_type);
    parsed.widths.push_back(cell.header_bytes);
  }
  return parsed;
}

// The same from a file and from memory, which must agree.
Parsed Parse(const Bytes& bytes, uint64_t position, size_t count,
             const std::vector<SqlColumnInfo>& columns, const FeatureMaps& features = {},
             const SerialTypeCells& before = {}) {
  const std::vector<ColumnRule> rules = MakeColumnRules({false, columns}, features);
  hand_made::FileOf file(bytes);
  SerialTypeCells cells = before;
  const Parsed from_file =
      Describe(ParseSerialTypes(file.buf(), position, count, rules, cells), cells);
  MemoryBytes memory{bytes.data(), bytes.size()};
  cells = before;
  const Parsed from_memory =
      Describe(ParseSerialTypes(memory, position, count, rules, cells), cells);
  EXPECT_EQ(from_file, from_memory);
  return from_file;
}

const std::vector<SqlColumnInfo> kThree{Column("a", 0), Column("b", 3), Column("c", 4)};

struct ParseCase {
  const char* name;
  Bytes bytes;
  uint64_t position;
  size_t count;
  Parsed expected;
};

TEST(ParseSerialTypes, ReadsAsManyAsWanted) {
  const ParseCase cases[] = {
      {"three of one byte", {1, 13, 12, 99}, 0, 3, {true, {1, 13, 12}, {1, 1, 1}}},
      {"from a position", {99, 99, 1, 13, 12}, 2, 3, {true, {1, 13, 12}, {1, 1, 1}}},
      {"fewer than there are columns", {1, 13, 12}, 0, 2, {true, {1, 13}, {1, 1}}},
      {"none", {1}, 0, 0, {true, {}, {}}},
      {"none behind the end", {1}, 7, 0, {true, {}, {}}},
      {"two-byte varint", {1, 0x87, 0x55, 0x0C}, 0, 3, {true, {1, 981, 12}, {1, 2, 1}}},
      {"refused in the first column", {13, 13, 12}, 0, 3, {false, {}, {}}},
      {"refused in the second column", {1, 1, 12}, 0, 3, {false, {1}, {1}}},
      {"reserved types pass everywhere", {10, 11, 10}, 0, 3, {true, {10, 11, 10}, {1, 1, 1}}},
      {"the end comes before the last", {1, 13}, 0, 3, {false, {1, 13}, {1, 1}}},
      {"starts at the end", {1, 13}, 2, 1, {false, {}, {}}},
      {"starts behind the end", {1, 13}, 1000, 1, {false, {}, {}}},
      {"varint cut off by the end", {1, 0x8D}, 0, 2, {true, {1, 13}, {1, 1}}},
  };
  for (const ParseCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Parse(c.bytes, c.position, c.count, kThree), c.expected);
  }
}

TEST(ParseSerialTypes, TheNinthByteGivesSevenBits) {
  const Bytes bytes{0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0xFF, 13};
  const uint64_t expected = (uint64_t{1} << 56) + 0x7F;
  EXPECT_EQ(Parse(bytes, 0, 2, {Column("a", 8), Column("b", 3)}),
            (Parsed{true, {expected, 13}, {9, 1}}));
}

TEST(ParseSerialTypes, APrimaryColumnTakesAnyType) {
  for (const uint8_t type : Bytes{0, 1, 7, 8, 12, 13, 20, 21}) {
    EXPECT_TRUE(Parse({type}, 0, 1, {Column("a", 17, true)}).complete) << int{type};
  }
}

TEST(ParseSerialTypes, APlaceholderColumnTakesOnlyNullAndReservedTypes) {
  for (uint8_t type = 0; type < 30; ++type) {
    EXPECT_EQ(Parse({type}, 0, 1, {Column("a", 17)}).complete,
              type == 0 || type == 10 || type == 11)
        << int{type};
  }
}

TEST(ParseSerialTypes, TheFirstMapAdmitsFurtherClasses) {
  const FeatureMap admits = hand_made::FeaturesOf({hand_made::Feature(0, 0, 2, 0, 0)});
  const std::vector<SqlColumnInfo> integer{Column("a", 0)};
  EXPECT_TRUE(Parse({13}, 0, 1, integer, {admits, FeatureMap{}}).complete);
  EXPECT_FALSE(Parse({13}, 0, 1, integer, {FeatureMap{}, admits}).complete);
  EXPECT_FALSE(Parse({12}, 0, 1, integer, {admits}).complete);
}

TEST(ParseSerialTypes, GoesOnBehindTheCellsThatAreThere) {
  SerialTypeCell alias;
  alias.header_bytes = 1;
  EXPECT_EQ(Parse({13, 12}, 0, 2, kThree, {}, {alias}), (Parsed{true, {0, 13, 12}, {1, 1, 1}}));
}

TEST(FirstColumnIsKey, NeedsAFirstColumnWithTheFlag) {
  EXPECT_FALSE(FirstColumnIsKey({}));
  EXPECT_FALSE(FirstColumnIsKey({true, {Column("a", 0), Column("b", 0, true)}}));
  EXPECT_TRUE(FirstColumnIsKey({true, {Column("a", 0, true)}}));
}

}  // namespace
