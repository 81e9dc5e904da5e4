// The two questions to a database's own schema.
#include "common/sqlitecommon/schema_query.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "common/sqlitecommon/sqlite_connection.h"
#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SchemaQueryTest : public testing::Test {
 protected:
  SchemaQueryTest() : connection_(folder_.File("a.db")) {
    EXPECT_EQ(connection_.Open(""), 0);
    sqlite3_exec(connection_.handle(),
                 "create table message (a INTEGER, b TEXT);"
                 "create index message_index on message(b);"
                 "create table other (c);"
                 "create view seen as select * from other;"
                 "create virtual table found using fts4(d)",
                 nullptr, nullptr, nullptr);
  }

  TempFolder folder_;
  LogCapture log_;
  SqliteConnection connection_;
};

TEST_F(SchemaQueryTest, TextOfATable) {
  const struct {
    const char* table;
    const char* sql;
  } kCases[] = {
      {"message", "CREATE TABLE message (a INTEGER, b TEXT)"},
      {"found", "CREATE VIRTUAL TABLE found using fts4(d)"},
      {"Message", ""},
      {"message_index", ""},
      {"seen", ""},
      {"missing", ""},
      {"", ""},
      {"message' or '1'='1", ""},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(GetTableSql(connection_.handle(), row.table), row.sql) << row.table;
  }
}

TEST_F(SchemaQueryTest, RootPageOfATable) {
  EXPECT_EQ(GetRootPage(connection_.handle(), "message"), 2);
  EXPECT_EQ(GetRootPage(connection_.handle(), "other"), 4);
  EXPECT_EQ(GetRootPage(connection_.handle(), "missing"), 0);
  EXPECT_EQ(GetRootPage(connection_.handle(), "message_index"), 0);
  EXPECT_EQ(GetRootPage(connection_.handle(), "found"), 0);  // a virtual table has no page
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

TEST_F(SchemaQueryTest, FileThatIsNoDatabaseGivesNothingInSilence) {
  std::ofstream(folder_.File("text")) << std::string(4096, 'x');
  SqliteConnection broken(folder_.File("text"));
  ASSERT_EQ(broken.Open(""), 0);
  EXPECT_EQ(GetTableSql(broken.handle(), "message"), "");
  EXPECT_EQ(GetRootPage(broken.handle(), "message"), -1);
  EXPECT_THAT(log_.Lines(), IsEmpty());  // the statement can't even be prepared
}

TEST_F(SchemaQueryTest, FailingStepIsLoggedWithTheCodeAndTheText) {
  // The schema is read, so the statement can be prepared; then another connection locks the file.
  ASSERT_EQ(GetRootPage(connection_.handle(), "message"), 2);
  SqliteConnection locker(folder_.File("a.db"));
  ASSERT_EQ(locker.Open(""), 0);
  ASSERT_EQ(sqlite3_exec(locker.handle(), "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(GetRootPage(connection_.handle(), "message"), -1);
  EXPECT_THAT(log_.Lines(),
              ElementsAre(LogLine{3, "src/common/sqlitecommon, 669 SQLite Error Code : 5"},
                          LogLine{3, "SQLite Error : database is locked"}));
  EXPECT_EQ(GetTableSql(connection_.handle(), "message"), "");
}

}  // namespace
