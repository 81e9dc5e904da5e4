#include "recovery/row_maker.h"

#include <gtest/gtest.h>

#include <set>

#include "recovery/layout_columns.h"
#include "recovery/recipe.h"

namespace recovery {
namespace {

// The values that a recipe makes in the column b of a table, beside a column a that counts.
std::vector<Value> Made(const std::string& recipe, size_t count = 300) {
  TableFacts table;
  table.name = "t";
  table.values = {{"a", ParseRecipe("serial")}, {"b", ParseRecipe(recipe)}};
  Layout layout;
  layout.sql = "CREATE TABLE t(a, b)";
  ReadColumns("t", layout);
  RowMaker maker(table, 5, 6, count);
  std::vector<Value> values;
  for (size_t i = 0; i < count; ++i) values.push_back(maker.Next(layout).at(1));
  return values;
}

size_t Distinct(const std::vector<Value>& values) {
  return std::set<Value, bool (*)(const Value&, const Value&)>(
             values.begin(), values.end(),
             [](const Value& left, const Value& right) {
               return Shown(left, 999) < Shown(right, 999);
             })
      .size();
}

void ExpectIntegers(const std::string& recipe, int64_t least, int64_t most) {
  for (const Value& value : Made(recipe)) {
    ASSERT_TRUE(std::holds_alternative<int64_t>(value)) << recipe << ' ' << Shown(value);
    EXPECT_GE(std::get<int64_t>(value), least) << recipe;
    EXPECT_LE(std::get<int64_t>(value), most) << recipe;
  }
}

TEST(RowMaker, Numbers) {
  ExpectIntegers("int -5 5", -5, 5);
  ExpectIntegers("small 10 5000", 10, 5000);
  ExpectIntegers("ref 9", 1, 9);
  ExpectIntegers("group 9", 1, 9);
  ExpectIntegers("flag 0.5", 0, 1);
  ExpectIntegers("pick 4:2 6", 4, 6);
  ExpectIntegers("7", 7, 7);
  EXPECT_EQ(Distinct(Made("flag 1")), 1U);
  for (const Value& value : Made("real 2 3")) EXPECT_GE(std::get<double>(value), 2.0);
}

TEST(RowMaker, TimesGrowWithinTheirYears) {
  ExpectIntegers("time_ms", 1325376000000 - 1, 1719792000000 + 60000);
  ExpectIntegers("time_s", 1325376000 - 1, 1719792000 + 60);
  ExpectIntegers("apple_ns", 347068800000000000, 741484800000000000 + 60000000000);
  const auto times = Made("apple_s");
  EXPECT_LT(std::get<double>(times.front()), std::get<double>(times.back()));
  EXPECT_NE(std::get<double>(times.front()), std::floor(std::get<double>(times.front())));
}

TEST(RowMaker, ColumnsOfTheSameRow) {
  const auto same = Made("same a", 20);
  const auto near = Made("near a 100 102", 20);
  for (int64_t i = 0; i < 20; ++i) {
    const auto place = static_cast<size_t>(i);
    EXPECT_EQ(same[place], Value{i + 1});
    EXPECT_GE(std::get<int64_t>(near[place]), i + 101);
    EXPECT_LE(std::get<int64_t>(near[place]), i + 103);
  }
  EXPECT_THROW(Made("same b"), std::runtime_error);
}

TEST(RowMaker, NullsAndGroups) {
  size_t nulls = 0;
  for (const Value& value : Made("guid ? 0.3", 1000)) nulls += IsNull(value) ? 1 : 0;
  EXPECT_GT(nulls, 200U);
  EXPECT_LT(nulls, 400U);
  EXPECT_LE(Distinct(Made("group_of hex 32 10")), 10U);
  EXPECT_EQ(Distinct(Made("guid")), 300U);
  EXPECT_EQ(Distinct(Made("text_const two words")), 1U);
  EXPECT_EQ(Made("text_const two words").at(0), Value{std::string("two words")});
}

TEST(RowMaker, LengthsAndScripts) {
  for (const Value& value : Made("json 20 90")) {
    EXPECT_LE(std::get<std::string>(value).size(), 90U);
    EXPECT_GE(std::get<std::string>(value).size(), 2U);
  }
  for (const Value& value : Made("plist 60 900")) {
    EXPECT_TRUE(std::get<Blob>(value).bytes.starts_with("bplist00"));
  }
  size_t longest = 0;
  std::string all;
  for (const Value& value : Made("message", 1500)) {
    longest = std::max(longest, std::get<std::string>(value).size());
    all += std::get<std::string>(value);
  }
  EXPECT_GT(longest, 4096U);
  for (const char* part :
       {"привет", "مرحبا", "你好", "내일", "नमस्ते", "สวัสดี", "😀", "\uFFFC", "straße"}) {
    EXPECT_NE(all.find(part), std::string::npos) << part;
  }
}

TEST(Recipe, EveryKindIsMade) {
  for (const char* recipe : {"phone", "email", "person", "url", "path", "mime", "jid", "digits 3 9",
                             "ascii 3 9", "words 1 4", "time_us", "apple_s_int"}) {
    EXPECT_GT(Distinct(Made(recipe)), 5U) << recipe;
  }
  for (const char* recipe :
       {"protobuf 9 99", "counts 4 60", "json_blob 9 99", "jpeg 99 999", "blob 4 40"}) {
    for (const Value& value : Made(recipe, 20)) EXPECT_FALSE(std::get<Blob>(value).bytes.empty());
  }
  EXPECT_TRUE(IsNull(Made("null").at(0)));
}

}  // namespace
}  // namespace recovery
