// The result database: its layout, and rows that enter it.
#include "storager/storager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_statement.h"
#include "reference/save_row.h"
#include "storager/column_lists.h"
#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const TableFields kMessage = {{1, 0, "_id", "INTEGER"}, {0, 2, "body", "TEXT"}};

class StoragerTest : public testing::Test {
 protected:
  StoragerTest() : storager_(Storager::Create(folder_.File("result.db"))) {}

  // The rows of a query as SQLite prints values, columns joined by a bar.
  std::vector<std::string> Rows(const std::string& sql) const {
    SqliteStatement query;
    EXPECT_EQ(query.Prepare(storager_->handle(), sql), 0) << sql;
    std::vector<std::string> rows;
    while (query.Step() == SQLITE_ROW) {
      std::string row;
      for (int i = 0; i < query.ColumnCount(); ++i) {
        row += (i == 0 ? "" : "|") + query.ColumnText(i);
      }
      rows.push_back(row);
    }
    return rows;
  }

  void Create(const std::string& table, const TableFields& fields) const {
    NeedQueryTables tables;
    tables[table] = fields;
    EXPECT_TRUE(storager_->CreateResultTables(tables));
  }

  bool Save(const std::string& table, const TableFields& fields, const RowValue& row) const {
    SqliteStatement insert;
    insert.Prepare(storager_->handle(), MakeInsertSql(table, fields));
    return SaveRow(fields, row, insert);
  }

  TempFolder folder_;
  LogCapture log_;
  std::unique_ptr<Storager> storager_;
};

RowValue Message(int64_t id, const std::string& body) {
  RowValue row;
  row.integer_values["_id"] = id;
  row.text_values["body"] = body;
  return row;
}

TEST_F(StoragerTest, FileThatCannotBeOpenedIsLoggedWithItsCode) {
  const std::string path = folder_.File("missing") + "/result.db";
  EXPECT_EQ(Storager::Create(path), nullptr);
  const std::vector<LogLine> lines = log_.Lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, 3);
  EXPECT_THAT(lines[0].message,
              testing::AllOf(
                  testing::StartsWith("[src/storager], at "),
                  testing::EndsWith(" line, open database fail, error code : 14, " + path + ".")));
}

TEST_F(StoragerTest, WithoutTablesTheDatabaseStaysAsSqliteMakesIt) {
  EXPECT_TRUE(storager_->CreateResultTables({}));
  EXPECT_THAT(Rows("select name from sqlite_master"), IsEmpty());
  EXPECT_THAT(Rows("PRAGMA journal_mode"), ElementsAre("delete"));
}

TEST_F(StoragerTest, LayoutIsATableWithAUniqueIndexForEachEntryInOrder) {
  NeedQueryTables tables;
  tables["zebra"] = {{1, 0, "_id", "INTEGER"}, {0, 2, "body", ""}, {1, 2, "address", "TEXT"}};
  tables["ant"] = {{1, 0, "a", "INTEGER NOT NULL"}};
  EXPECT_TRUE(storager_->CreateResultTables(tables));
  EXPECT_THAT(Rows("select sql from sqlite_master order by rowid"),
              ElementsAre("CREATE TABLE zebra(_id INTEGER,body ,address TEXT)",
                          "CREATE UNIQUE INDEX zebra_unique_key_index on zebra(_id,address)",
                          "CREATE TABLE ant(a INTEGER NOT NULL)",
                          "CREATE UNIQUE INDEX ant_unique_key_index on ant(a)"));
  EXPECT_THAT(Rows("PRAGMA encoding"), ElementsAre("UTF-8"));
  EXPECT_THAT(Rows("PRAGMA journal_mode"), ElementsAre("wal"));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(StoragerTest, TableWithoutAUniqueFieldTakesDuplicates) {
  const TableFields fields = {{0, 0, "a", "INTEGER"}};
  Create("t", fields);
  EXPECT_THAT(Rows("select name from sqlite_master"), ElementsAre("t"));
  RowValue row;
  row.integer_values["a"] = 1;
  EXPECT_TRUE(Save("t", fields, row));
  EXPECT_TRUE(Save("t", fields, row));
  EXPECT_THAT(Rows("select a from t"), ElementsAre("1", "1"));
}

TEST_F(StoragerTest, StatementsThatFailAreSilentAndTheNextTableIsMade) {
  NeedQueryTables tables;
  tables["group"] = kMessage;  // a word of SQL
  tables["twice"] = {{1, 0, "a", "INTEGER"}, {0, 0, "a", "INTEGER"}};
  tables["none"] = {};
  tables["sms"] = kMessage;
  EXPECT_TRUE(storager_->CreateResultTables(tables));
  EXPECT_THAT(Rows("select name from sqlite_master where type = 'table'"), ElementsAre("sms"));
  EXPECT_FALSE(Save("group", kMessage, Message(1, "lost")));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(StoragerTest, EveryKindOfValueIsSavedAsItIs) {
  const TableFields fields = {
      {1, 2, "n", ""},          {0, 0, "r", ""},          {0, 0, "t", ""},     {0, 0, "b", ""},
      {0, 0, "empty_text", ""}, {0, 0, "empty_blob", ""}, {0, 0, "absent", ""}};
  Create("t", fields);
  RowValue row;
  row.integer_values["n"] = -5000000000;
  row.real_values["r"] = 2.5;
  row.text_values["t"] = std::string("a\0b", 3);
  row.blob_values["b"] = {0x00, 0xFF};
  row.text_values["empty_text"] = "";
  row.blob_values["empty_blob"] = {};
  row.text_values["no field of the table"] = "x";
  EXPECT_TRUE(Save("t", fields, row));
  EXPECT_THAT(Rows("select typeof(n) || n, typeof(r) || r, typeof(t) || hex(t), typeof(b) || "
                   "hex(b), typeof(empty_text), typeof(empty_blob), typeof(absent) from t"),
              ElementsAre("integer-5000000000|real2.5|text610062|blob00FF|text|null|null"));
}

TEST_F(StoragerTest, ConfiguredTypeOfAFieldPlaysNoPart) {
  const TableFields fields = {{1, 3, "a", ""}};
  Create("t", fields);
  RowValue row;
  row.integer_values["a"] = 7;
  EXPECT_TRUE(Save("t", fields, row));
  EXPECT_THAT(Rows("select typeof(a) from t"), ElementsAre("integer"));
}

TEST_F(StoragerTest, SecondRowWithTheSameUniqueColumnsIsRefused) {
  Create("sms", kMessage);
  SqliteStatement insert;
  ASSERT_EQ(insert.Prepare(storager_->handle(), MakeInsertSql("sms", kMessage)), 0);
  EXPECT_TRUE(SaveRow(kMessage, Message(1, "first"), insert));
  EXPECT_FALSE(SaveRow(kMessage, Message(1, "second"), insert));
  EXPECT_TRUE(SaveRow(kMessage, Message(2, "third"), insert));  // the statement is ready again
  EXPECT_THAT(Rows("select _id, body from sms"), ElementsAre("1|first", "2|third"));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(StoragerTest, RefusedRowLeavesTheTransactionAroundIt) {
  Create("sms", kMessage);
  storager_->Execute("BEGIN");
  EXPECT_TRUE(Save("sms", kMessage, Message(1, "first")));
  EXPECT_FALSE(Save("sms", kMessage, Message(1, "second")));
  EXPECT_TRUE(Save("sms", kMessage, Message(2, "third")));
  storager_->Execute("COMMIT");
  EXPECT_THAT(Rows("select count(*) from sms"), ElementsAre("2"));
}

TEST_F(StoragerTest, NullsInAUniqueColumnAreAllAccepted) {
  Create("sms", kMessage);
  RowValue row;
  row.text_values["body"] = "text";
  EXPECT_TRUE(Save("sms", kMessage, row));
  EXPECT_TRUE(Save("sms", kMessage, row));
  EXPECT_THAT(Rows("select _id is null, body from sms"), ElementsAre("1|text", "1|text"));
}

TEST_F(StoragerTest, ValuesOfTheRowBeforeDoNotStay) {
  Create("sms", kMessage);
  SqliteStatement insert;
  ASSERT_EQ(insert.Prepare(storager_->handle(), MakeInsertSql("sms", kMessage)), 0);
  EXPECT_TRUE(SaveRow(kMessage, Message(1, "first"), insert));
  RowValue row;
  row.integer_values["_id"] = 2;
  EXPECT_TRUE(SaveRow(kMessage, row, insert));
  EXPECT_THAT(Rows("select _id, typeof(body) from sms"), ElementsAre("1|text", "2|null"));
}

TEST_F(StoragerTest, RowForAMissingTableIsRefusedInSilence) {
  EXPECT_FALSE(Save("missing", kMessage, Message(1, "lost")));
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

}  // namespace
