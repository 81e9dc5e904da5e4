#include "recovery/compare.h"

#include <gtest/gtest.h>

#include "recovery/layout_columns.h"

namespace recovery {
namespace {

Version Live(Row row) { return {.row = std::move(row), .row_id = 1}; }
Version Gone(Row row, bool standing) {
  return {.row = std::move(row), .row_id = 2, .live = false, .standing = standing, .in_main = true};
}

TableTruth Truth(std::vector<Version> versions) {
  TableTruth truth;
  truth.name = "t";
  truth.layout.sql =
      "CREATE TABLE t(id INTEGER PRIMARY KEY, a INTEGER, b TEXT, c INTEGER DEFAULT 7)";
  ReadColumns("t", truth.layout);
  truth.versions = std::move(versions);
  return truth;
}

Counts Compared(const TableTruth& truth, const std::vector<Row>& rows,
                Examples* examples = nullptr) {
  const ResultTable result{{"id", "a", "b", "c"}, rows};
  Examples unused;
  return Compare(truth, &result, "id", 3, examples == nullptr ? unused : *examples);
}

TEST(Compare, CountsWhatWasFoundMissedAndInvented) {
  const TableTruth truth =
      Truth({Live({{}, 5, "five", 7}), Live({{}, 6, "six", 7}), Gone({{}, 8, "eight", 7}, true),
             Gone({{}, 9, "nine", 7}, true), Gone({{}, 10, "ten", 7}, false)});
  Examples examples;
  const Counts counts =
      Compared(truth, {{1, 5, "five", 7}, {0, 8, "eight", 7}, {0, 10, "ten", 7}, {3, 8, "nine", 7}},
               &examples);
  EXPECT_EQ(counts.live, 2U);
  EXPECT_EQ(counts.live_found, 1U);
  EXPECT_EQ(counts.standing, 2U);
  EXPECT_EQ(counts.recovered, 1U);
  EXPECT_EQ(counts.carved, 3U);
  EXPECT_EQ(counts.false_rows, 1U);
  EXPECT_EQ(counts.repeats, 0U);
  EXPECT_DOUBLE_EQ(counts.LiveShare(), 0.5);
  EXPECT_DOUBLE_EQ(counts.Recall(), 0.5);
  EXPECT_DOUBLE_EQ(counts.Precision(), 2.0 / 3.0);
  ASSERT_EQ(examples.false_rows.size(), 1U);
  EXPECT_EQ(examples.false_rows[0], "id=3, a=8, b='nine', c=7");
  ASSERT_EQ(examples.missed.size(), 1U);
  EXPECT_EQ(examples.missed[0], "row 2: id=NULL, a=9, b='nine', c=7");
}

TEST(Compare, FormerStatesAreCountedByThemselves) {
  Version former = Gone({{}, 5, "unread", 7}, true);
  former.former = true;
  const TableTruth truth = Truth({Live({{}, 5, "read", 7}), former});
  EXPECT_EQ(Compared(truth, {{1, 5, "read", 7}}).standing, 0U);
  EXPECT_EQ(Compared(truth, {{1, 5, "read", 7}}).former, 1U);
  const Counts counts = Compared(truth, {{1, 5, "read", 7}, {1, 5, "unread", 7}});
  EXPECT_EQ(counts.former_found, 1U);
  EXPECT_EQ(counts.false_rows + counts.repeats, 0U);
}

TEST(Compare, EqualLiveRowsAreEachOfThem) {
  const TableTruth truth = Truth({Live({{}, 5, "x", 7}), Live({{}, 5, "x", 7})});
  EXPECT_EQ(Compared(truth, {{1, 5, "x", 7}}).live_found, 1U);
  const Counts counts = Compared(truth, {{1, 5, "x", 7}, {2, 5, "x", 7}, {0, 5, "x", 7}});
  EXPECT_EQ(counts.live_found, 2U);
  EXPECT_EQ(counts.carved, 1U);
  EXPECT_EQ(counts.repeats, 1U);
  EXPECT_EQ(counts.false_rows, 0U);
}

TEST(Compare, AShortRowHasDefaultsOrNothing) {
  const TableTruth truth = Truth({Gone({{}, 5, "x"}, true)});
  EXPECT_EQ(Compared(truth, {{0, 5, "x", 7}}).recovered, 1U);
  EXPECT_EQ(Compared(truth, {{0, 5, "x", 0}}).recovered, 1U);
  EXPECT_EQ(Compared(truth, {{0, 5, "x", {}}}).recovered, 1U);
  EXPECT_EQ(Compared(truth, {{0, 5, "x", 8}}).false_rows, 1U);
}

TEST(Compare, ATableThatTheResultLacksHasNothing) {
  Examples examples;
  const Counts counts = Compare(Truth({Live({{}, 5, "x", 7}), Gone({{}, 6, "x", 7}, true)}),
                                nullptr, "", 3, examples);
  EXPECT_EQ(counts.live, 1U);
  EXPECT_EQ(counts.live_found, 0U);
  EXPECT_EQ(counts.standing, 1U);
  EXPECT_EQ(counts.recovered, 0U);
}

TEST(Compare, OnlyTheColumnsOfTheResultCount) {
  const TableTruth truth = Truth({Gone({{}, 5, "x", 7}, true)});
  const ResultTable result{{"ID", "A"}, {{77, 5}}};
  Examples examples;
  EXPECT_EQ(Compare(truth, &result, "id", 0, examples).recovered, 1U);
  EXPECT_EQ(Compare(truth, &result, "", 0, examples).false_rows, 1U);
}

TEST(ComparedForm, NothingIsNothing) {
  for (const Value& value :
       {Value{}, Value{int64_t{0}}, Value{0.0}, Value{std::string()}, Value{Blob{}}}) {
    EXPECT_EQ(ComparedForm(value), "") << Shown(value);
  }
}

TEST(ComparedForm, NumbersCompareByValueAndTextsByBytes) {
  EXPECT_EQ(ComparedForm(int64_t{3}), ComparedForm(3.0));
  EXPECT_NE(ComparedForm(int64_t{3}), ComparedForm(3.5));
  EXPECT_EQ(ComparedForm(std::string("abc")), ComparedForm(Blob{"abc"}));
  EXPECT_EQ(ComparedForm(std::string("42")), ComparedForm(int64_t{42}));
  EXPECT_NE(ComparedForm(std::string("+42")), ComparedForm(int64_t{42}));
  EXPECT_NE(ComparedForm(std::string("a")), ComparedForm(std::string("b")));
}

TEST(ComparedForm, TextsCompareWithoutWhatTheLibraryTakesOut) {
  EXPECT_EQ(ComparedForm(std::string("\uFFFChello\x01")), ComparedForm(std::string("hello")));
  EXPECT_NE(ComparedForm(std::string("\uFFFChello")), ComparedForm(std::string("hellollo")));
  EXPECT_NE(ComparedForm(Blob{"\xFF\x01x"}), ComparedForm(Blob{"x"}));
}

}  // namespace
}  // namespace recovery
