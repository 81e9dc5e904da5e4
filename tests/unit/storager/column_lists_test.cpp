// The lists inside the statements of the result database, and the kinds of a row's values.
#include "storager/column_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "storager/row_value.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const TableFields kNone;
const TableFields kOne = {{1, 0, "_id", "INTEGER"}};
const TableFields kThree = {{1, 0, "_id", "INTEGER"}, {0, 2, "body", ""}, {-5, 2, "a b", "TEXT"}};

TEST(ColumnListsTest, Definitions) {
  EXPECT_EQ(JoinColumnDefs(kNone), "");
  EXPECT_EQ(JoinColumnDefs(kOne), "_id INTEGER");
  EXPECT_EQ(JoinColumnDefs(kThree), "_id INTEGER,body ,a b TEXT");
}

TEST(ColumnListsTest, Names) {
  EXPECT_EQ(JoinColumnNames(kNone), "");
  EXPECT_EQ(JoinColumnNames(kOne), "_id");
  EXPECT_EQ(JoinColumnNames(kThree), "_id,body,a b");
  EXPECT_EQ(JoinColumnNamesIf(kThree, IsAnyField), "_id,body,a b");
  EXPECT_EQ(JoinColumnNamesIf(kThree, IsUniqueField), "_id,a b");
  EXPECT_EQ(JoinColumnNamesIf(kThree, [](const TableFieldInfo&) { return false; }), "");
}

TEST(ColumnListsTest, Placeholders) {
  EXPECT_EQ(MakePlaceholders(0), "");
  EXPECT_EQ(MakePlaceholders(1), "?");
  EXPECT_EQ(MakePlaceholders(4), "?,?,?,?");
}

TEST(ColumnListsTest, InsertStatement) {
  EXPECT_EQ(MakeInsertSql("sms", kThree), "insert into sms(_id,body,a b) values(?,?,?)");
  EXPECT_EQ(MakeInsertSql("sms", kNone), "insert into sms() values()");
}

TEST(RowValueTest, KindIsThatOfTheFirstMapWithTheName) {
  RowValue row;
  EXPECT_EQ(ValueKindOf(row, "a"), -1);
  row.blob_values["a"] = {1};
  EXPECT_EQ(ValueKindOf(row, "a"), 3);
  row.real_values["a"] = 1.5;
  EXPECT_EQ(ValueKindOf(row, "a"), 1);
  row.integer_values["a"] = 1;
  EXPECT_EQ(ValueKindOf(row, "a"), 0);
  row.text_values["a"] = "";
  EXPECT_EQ(ValueKindOf(row, "a"), 2);
  EXPECT_EQ(ValueKindOf(row, "A"), -1);
}

TEST(RowValueTest, ValuesOrNothing) {
  RowValue row;
  row.text_values["t"] = "text";
  row.blob_values["b"] = {1, 2};
  SetIntegerValue(row, "n", 7);
  SetIntegerValue(row, "n", 8);
  EXPECT_EQ(GetTextValue(row, "t"), "text");
  EXPECT_EQ(GetTextValue(row, "b"), "");
  EXPECT_THAT(GetBlobValue(row, "b"), ElementsAre(1, 2));
  EXPECT_THAT(GetBlobValue(row, "t"), IsEmpty());
  EXPECT_EQ(row.integer_values.at("n"), 8);
}

}  // namespace
