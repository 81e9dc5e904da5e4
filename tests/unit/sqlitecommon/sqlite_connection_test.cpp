// Opening and closing of connections, and statements on them.
#include "common/sqlitecommon/sqlite_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "common/sqlitecommon/sqlite_statement.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class SqliteConnectionTest : public testing::Test {
 protected:
  TempFolder folder_;
};

TEST_F(SqliteConnectionTest, WithoutAPathNothingIsOpened) {
  SqliteConnection connection;
  EXPECT_EQ(connection.Open(""), 0);
  EXPECT_EQ(connection.handle(), nullptr);
  EXPECT_EQ(connection.Close(), 0);
}

TEST_F(SqliteConnectionTest, ArgumentIsAdoptedWhenNoPathIsStored) {
  SqliteConnection connection;
  EXPECT_EQ(connection.Open(folder_.File("a.db")), 0);
  EXPECT_NE(connection.handle(), nullptr);
  EXPECT_EQ(connection.path(), folder_.File("a.db"));
  EXPECT_TRUE(fs::exists(folder_.File("a.db")));  // a missing file is created
}

TEST_F(SqliteConnectionTest, ArgumentIsIgnoredWhenAPathIsStored) {
  SqliteConnection connection(folder_.File("a.db"));
  EXPECT_EQ(connection.Open(folder_.File("b.db")), 0);
  EXPECT_EQ(connection.path(), folder_.File("a.db"));
  EXPECT_TRUE(fs::exists(folder_.File("a.db")));
  EXPECT_FALSE(fs::exists(folder_.File("b.db")));
}

TEST_F(SqliteConnectionTest, NamesInOtherScriptsAreOpened) {
  const std::string path = folder_.File("写真 \xF0\x9F\x98\x80.db");
  SqliteConnection connection(path);
  EXPECT_EQ(connection.Open(""), 0);
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(SqliteConnectionTest, PathThatIsNoUtf8Throws) {
  SqliteConnection connection(folder_.File("\xFF.db"));
  EXPECT_THROW(connection.Open(""), std::range_error);
}

TEST_F(SqliteConnectionTest, FileThatCannotBeOpenedGivesTheCode) {
  SqliteConnection missing(folder_.File("missing/a.db"));
  EXPECT_EQ(missing.Open(""), SQLITE_CANTOPEN);
  EXPECT_EQ(missing.Close(), 0);
  SqliteConnection directory(folder_.path().string());
  EXPECT_EQ(directory.Open(""), SQLITE_CANTOPEN);
}

TEST_F(SqliteConnectionTest, CloseClearsTheHandle) {
  SqliteConnection connection(folder_.File("a.db"));
  ASSERT_EQ(connection.Open(""), 0);
  EXPECT_EQ(connection.Close(), 0);
  EXPECT_EQ(connection.handle(), nullptr);
  EXPECT_EQ(connection.Close(), 0);
  EXPECT_EQ(connection.Open(""), 0);
  EXPECT_NE(connection.handle(), nullptr);
}

TEST_F(SqliteConnectionTest, CloseFinalizesStatementsThatAreStillOpen) {
  SqliteConnection connection(folder_.File("a.db"));
  ASSERT_EQ(connection.Open(""), 0);
  for (const char* sql : {"select 1", "select 2", "select 3"}) {
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(connection.handle(), sql, -1, &statement, nullptr), 0);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
  }
  EXPECT_EQ(connection.Close(), 0);
  EXPECT_EQ(connection.handle(), nullptr);
}

TEST_F(SqliteConnectionTest, CloseThatFailsTwiceKeepsTheHandle) {
  SqliteConnection source(folder_.File("a.db"));
  SqliteConnection target(folder_.File("b.db"));
  ASSERT_EQ(source.Open(""), 0);
  ASSERT_EQ(target.Open(""), 0);
  sqlite3_exec(source.handle(), "create table t(a)", nullptr, nullptr, nullptr);
  sqlite3_backup* backup = sqlite3_backup_init(target.handle(), "main", source.handle(), "main");
  ASSERT_NE(backup, nullptr);
  ASSERT_EQ(sqlite3_backup_step(backup, 1), SQLITE_OK);
  EXPECT_EQ(source.Close(), SQLITE_BUSY);  // a running backup is no statement
  EXPECT_NE(source.handle(), nullptr);
  EXPECT_EQ(sqlite3_backup_finish(backup), SQLITE_OK);
  EXPECT_EQ(source.Close(), 0);
  EXPECT_EQ(source.handle(), nullptr);
}

class SqliteStatementTest : public testing::Test {
 protected:
  SqliteStatementTest() {
    EXPECT_EQ(connection_.Open(":memory:"), 0);
    sqlite3_exec(connection_.handle(), "create table t(a, b)", nullptr, nullptr, nullptr);
  }

  SqliteConnection connection_;
};

TEST_F(SqliteStatementTest, ColumnsOfEachKind) {
  SqliteStatement query;
  const std::string sql = "select 7 as n, 2.5, 'text', x'0041FF', null, 5000000000, ''";
  ASSERT_EQ(query.Prepare(connection_.handle(), sql), 0);
  EXPECT_EQ(query.sql(), sql);
  EXPECT_EQ(query.Step(), SQLITE_ROW);
  EXPECT_EQ(query.result(), SQLITE_ROW);
  EXPECT_EQ(query.ColumnCount(), 7);
  EXPECT_EQ(query.ColumnName(0), "n");
  EXPECT_EQ(query.ColumnName(99), "");
  const int types[] = {SQLITE_INTEGER, SQLITE_FLOAT, SQLITE_TEXT, SQLITE_BLOB, SQLITE_NULL};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(query.ColumnType(i), types[i]) << i;
  EXPECT_EQ(query.ColumnInt(0), 7);
  EXPECT_EQ(query.ColumnDouble(1), 2.5);
  EXPECT_EQ(query.ColumnText(2), "text");
  EXPECT_THAT(query.ColumnBlob(3), ElementsAre(0x00, 0x41, 0xFF));
  EXPECT_EQ(query.ColumnText(4), "");
  EXPECT_EQ(query.ColumnInt(4), 0);
  EXPECT_THAT(query.ColumnBlob(4), IsEmpty());
  EXPECT_EQ(query.ColumnInt64(5), 5000000000LL);
  EXPECT_THAT(query.ColumnBlob(6), IsEmpty());
  EXPECT_EQ(query.Step(), SQLITE_DONE);
}

TEST_F(SqliteStatementTest, TextEndsAtItsFirstZeroByte) {
  SqliteStatement query;
  ASSERT_EQ(query.Prepare(connection_.handle(), "select 'ab' || char(0) || 'cd'"), 0);
  ASSERT_EQ(query.Step(), SQLITE_ROW);
  EXPECT_EQ(query.ColumnText(0), "ab");
}

TEST_F(SqliteStatementTest, WithoutAStatementReadsAreNeutralAndBindsGiveZero) {
  SqliteStatement query;
  EXPECT_EQ(query.Prepare(connection_.handle(), "no statement"), SQLITE_ERROR);
  EXPECT_EQ(query.result(), SQLITE_ERROR);
  EXPECT_EQ(query.handle(), nullptr);
  EXPECT_EQ(query.ColumnCount(), 0);
  EXPECT_EQ(query.ColumnType(0), 0);
  EXPECT_EQ(query.ColumnName(0), "");
  EXPECT_EQ(query.ColumnInt(0), 0);
  EXPECT_EQ(query.ColumnInt64(0), 0);
  EXPECT_EQ(query.ColumnDouble(0), 0.0);
  EXPECT_EQ(query.ColumnText(0), "");
  EXPECT_THAT(query.ColumnBlob(0), IsEmpty());
  EXPECT_EQ(query.BindInt64(1, 1), 0);
  EXPECT_EQ(query.BindDouble(1, 1.0), 0);
  EXPECT_EQ(query.BindText(1, "a"), 0);
  EXPECT_EQ(query.BindBlob(1, {1}), 0);
  EXPECT_EQ(query.BindNull(1), 0);
  EXPECT_EQ(query.result(), 0);
  EXPECT_EQ(query.Step(), SQLITE_MISUSE);
  EXPECT_EQ(query.Reset(), 0);
}

TEST_F(SqliteStatementTest, BindCodesAreKept) {
  SqliteStatement insert;
  ASSERT_EQ(insert.Prepare(connection_.handle(), "insert into t values(?, ?)"), 0);
  EXPECT_EQ(insert.BindInt64(1, 7), 0);
  EXPECT_EQ(insert.BindText(3, "a"), SQLITE_RANGE);
  EXPECT_EQ(insert.result(), SQLITE_RANGE);
  EXPECT_EQ(insert.BindNull(2), 0);
  EXPECT_EQ(insert.result(), 0);
}

TEST_F(SqliteStatementTest, PreparingAgainLetsGoOfTheEarlierStatement) {
  SqliteStatement query;
  ASSERT_EQ(query.Prepare(connection_.handle(), "select 1"), 0);
  ASSERT_EQ(query.Prepare(connection_.handle(), "select 2"), 0);
  EXPECT_EQ(sqlite3_next_stmt(connection_.handle(), nullptr), query.handle());
  EXPECT_EQ(sqlite3_next_stmt(connection_.handle(), query.handle()), nullptr);
  query.Finalize();
  EXPECT_EQ(query.handle(), nullptr);
  EXPECT_EQ(sqlite3_next_stmt(connection_.handle(), nullptr), nullptr);
}

}  // namespace
