#include "storager/unique_index.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "common/sqlitecommon/sqlite_statement.h"
#include "storager/storager.h"
#include "support/sqlite_maker.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;

const TableFields kFields = {{1, 0, "n", "INTEGER"}, {0, 2, "body", "TEXT"}};
constexpr char kSchema[] = "SELECT rowid, type, name, tbl_name, sql FROM sqlite_master";

class UniqueIndexTest : public testing::Test {
 protected:
  UniqueIndexTest() : storager_(Storager::Create(path_)) {
    NeedQueryTables tables;
    for (const char* name : {"one", "two", "three"}) tables[name] = kFields;
    storager_->CreateResultTables(tables);
  }

  // The result as it would be if the process ended now.
  TextRows AfterAnEnd(const std::string& sql) const {
    const std::string copy = folder_.File("copy.db");
    for (const char* suffix : {"", "-wal"}) {
      fs::copy_file(path_ + suffix, copy + suffix, fs::copy_options::overwrite_existing);
    }
    return SqliteMaker(copy).Rows(sql);
  }

  TempFolder folder_;
  std::string path_ = folder_.File("result.db");
  std::unique_ptr<Storager> storager_;
};

TEST_F(UniqueIndexTest, IsThereForATableThatHasOne) {
  EXPECT_TRUE(UniqueIndex(storager_->handle(), "two").Exists());
  EXPECT_FALSE(UniqueIndex(storager_->handle(), "four").Exists());
}

TEST_F(UniqueIndexTest, LeavesTheSchemaAsItWas) {
  const TextRows before = SqliteMaker(path_).Rows(kSchema);
  ASSERT_EQ(before.size(), 6U);
  for (const char* table : {"one", "three", "two"}) {
    storager_->Execute("BEGIN");
    UniqueIndex index(storager_->handle(), table);
    ASSERT_TRUE(index.Drop());
    EXPECT_FALSE(index.Exists());
    storager_->Execute((std::string("INSERT INTO ") + table + " VALUES(2, 'a'), (1, 'b')").c_str());
    EXPECT_TRUE(index.Restore());
    storager_->Execute("COMMIT");
  }
  SqliteMaker result(path_);
  EXPECT_EQ(result.Rows(kSchema), before);
  EXPECT_EQ(result.Text("PRAGMA integrity_check"), "ok");
  EXPECT_THROW(result.Run("INSERT INTO one VALUES(2, 'c')"), std::runtime_error);
}

TEST_F(UniqueIndexTest, StaysOutsideATransactionAndWhileAStatementRuns) {
  UniqueIndex index(storager_->handle(), "one");
  EXPECT_FALSE(index.Drop());
  storager_->Execute("INSERT INTO one VALUES(1, 'a')");
  storager_->Execute("BEGIN");
  SqliteStatement query;
  query.Prepare(storager_->handle(), "SELECT * FROM one");
  ASSERT_EQ(query.Step(), SQLITE_ROW);
  EXPECT_FALSE(index.Drop());
  EXPECT_TRUE(index.Exists());
  query.Finalize();
  EXPECT_TRUE(index.Drop());
}

TEST_F(UniqueIndexTest, DoesNotComeBackOverRowsThatRepeatAKey) {
  storager_->Execute("BEGIN");
  UniqueIndex index(storager_->handle(), "one");
  ASSERT_TRUE(index.Drop());
  storager_->Execute("INSERT INTO one VALUES(1, 'a'), (1, 'b')");
  EXPECT_FALSE(index.Restore());
  storager_->Execute("ROLLBACK");
  EXPECT_TRUE(index.Exists());
}

TEST_F(UniqueIndexTest, IsInTheFileWheneverTheProcessEnds) {
  storager_->Execute("PRAGMA cache_size=1");  // pages leave for the log at once
  const std::string rows =
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) "
      "INSERT INTO one SELECT i * 7919 % 3001, 'a body of some length' FROM n";
  const TextRows schema = AfterAnEnd(kSchema);
  storager_->Execute("BEGIN");
  UniqueIndex index(storager_->handle(), "one");
  ASSERT_TRUE(index.Drop());
  storager_->Execute(rows.c_str());
  EXPECT_EQ(AfterAnEnd(kSchema), schema);
  EXPECT_EQ(AfterAnEnd("SELECT count(*) FROM one"), (TextRows{{"0"}}));
  ASSERT_TRUE(index.Restore());
  EXPECT_EQ(AfterAnEnd("PRAGMA integrity_check"), (TextRows{{"ok"}}));
  storager_->Execute("COMMIT");
  EXPECT_EQ(AfterAnEnd(kSchema), schema);
  EXPECT_EQ(AfterAnEnd("SELECT count(*) FROM one"), (TextRows{{"3000"}}));
  EXPECT_EQ(AfterAnEnd("PRAGMA integrity_check"), (TextRows{{"ok"}}));
}

}  // namespace
