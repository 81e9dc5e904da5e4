// Scans of live records, and of nothing at all.
#include <vexasqlitesdk.h>

#include <filesystem>

#include "support/scan_fixture.h"

namespace fs = std::filesystem;

namespace {

class LiveScan : public ScanFixture {
 protected:
  // Configures `table` with the columns as result fields, the first of them unique if wanted.
  void Configure(const std::string& table, const std::vector<std::string>& columns,
                 const ConfigTable& flags = {}, int first_is_unique = 0) {
    ConfigMaker config_db(config());
    config_db.AddTable(table, flags);
    int is_unique = first_is_unique;
    for (const std::string& column : columns) {
      config_db.AddField(table, {column, "", 2, is_unique, 0});
      is_unique = 0;
    }
    config_db.ScanDatabase(1);
  }

  TextRows TableNames() const {
    return ResultRows("SELECT name FROM sqlite_master WHERE type='table'");
  }
};

TEST_F(LiveScan, EveryKindOfValueIsCopied) {
  Configure("t", {"a", "b", "c", "d"});
  SqliteMaker(source()).Run(
      "CREATE TABLE t(a INTEGER, b REAL, c TEXT, d BLOB);"
      "INSERT INTO t VALUES(1, 2.5, 'text', x'00FF');"
      "INSERT INTO t VALUES(-9223372036854775808, NULL, '', x'');"
      "INSERT INTO t VALUES(NULL, -0.5, 'Grüße 😀', 'cut' || char(0) || 'off')");
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(ResultRows("SELECT * FROM t"), (TextRows{{"1", "2.5", "text", "x'00FF'"},
                                                     {"-9223372036854775808", "NULL", "", "NULL"},
                                                     {"NULL", "-0.5", "Grüße 😀", "cut"}}));
}

// An SQL function takes no more than 127 arguments.
TEST_F(LiveScan, TablesOfManyColumnsAreCopied) {
  for (const size_t count : {size_t{127}, size_t{128}, size_t{300}}) {
    SCOPED_TRACE(count);
    fs::remove(source());
    fs::remove(config());
    std::vector<std::string> columns;
    std::string list;
    std::string values;
    for (size_t i = 0; i < count; ++i) {
      columns.push_back("c" + std::to_string(i));
      list += (i == 0 ? "" : ", ") + columns.back() + " INTEGER";
      values += (i == 0 ? "" : ",") + std::to_string(i);
    }
    Configure("t", columns);
    SqliteMaker(source()).Run("CREATE TABLE t(" + list + "); INSERT INTO t VALUES(" + values +
                              "),(" + values + ")");
    EXPECT_EQ(RunScan(kLive), 0);
    const std::string last = columns.back();
    EXPECT_EQ(ResultRows("SELECT c1, " + last + " FROM t"),
              (TextRows{{"1", std::to_string(count - 1)}, {"1", std::to_string(count - 1)}}));
  }
}

TEST_F(LiveScan, TheLinesOfAScanOfLiveRecords) {
  Configure("t", {"a"});
  SqliteMaker(source()).Run("CREATE TABLE t(a)");
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_TRUE(LinesMatch({"info Enter Scan", "info Enter ScanSqlite::ScanExist",
                          "info End ScanSqlite::ScanExist", "info End Scan"},
                         LogLines()));
}

TEST_F(LiveScan, RowsAreOrderedByRowIdWhenTheConfigurationAsksForIt) {
  const std::string make =
      "CREATE TABLE t(a TEXT, b TEXT); CREATE INDEX i ON t(a);"
      "INSERT INTO t VALUES('z','1'),('m','2'),('a','3')";
  for (const int order : {0, 1, 2}) {
    fs::remove(source());
    fs::remove(config());
    ConfigTable flags;
    flags.need_order_by_rowid = order;
    Configure("t", {"a"}, flags);
    SqliteMaker(source()).Run(make);
    EXPECT_EQ(RunScan(kLive), 0);
    // Without the order SQLite takes the index, which is narrower.
    const TextRows by_index = {{"1", "a"}, {"2", "m"}, {"3", "z"}};
    const TextRows by_row = {{"1", "z"}, {"2", "m"}, {"3", "a"}};
    EXPECT_EQ(ResultRows("SELECT rowid, a FROM t ORDER BY rowid"), order == 1 ? by_row : by_index)
        << order;
  }
}

TEST_F(LiveScan, ATableWithoutRowIdsCannotBeOrderedByThem) {
  SqliteMaker(source()).Run(
      "CREATE TABLE t(a TEXT PRIMARY KEY, b TEXT) WITHOUT ROWID; INSERT INTO t VALUES('x','y')");
  ConfigTable flags;
  flags.need_order_by_rowid = 1;
  Configure("t", {"a", "b"}, flags);
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_TRUE(ResultRows("SELECT * FROM t").empty());
  fs::remove(config());
  Configure("t", {"a", "b"});
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(ResultRows("SELECT * FROM t"), (TextRows{{"x", "y"}}));
}

TEST_F(LiveScan, ARowThatRepeatsAUniqueValueIsDroppedAndTheFirstStays) {
  Configure("t", {"a", "b"}, {}, 1);
  SqliteMaker(source()).Run(
      "CREATE TABLE t(a INTEGER, b TEXT); INSERT INTO t "
      "VALUES(1,'first'),(2,'other'),(1,'second')");
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(ResultRows("SELECT b FROM t"), (TextRows{{"first"}, {"other"}}));
}

TEST_F(LiveScan, OnlyColumnsOfTheLiveTableReachTheResult) {
  Configure("t", {"b", "missing", "A", "a"});
  SqliteMaker(source()).Run(
      "CREATE TABLE t(a INTEGER, b INTEGER, c INTEGER); INSERT INTO t VALUES(1, 2, 3)");
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(ResultRows("SELECT name FROM pragma_table_info('t')"), (TextRows{{"b"}, {"a"}}));
  EXPECT_EQ(ResultRows("SELECT * FROM t"), (TextRows{{"2", "1"}}));
}

TEST_F(LiveScan, TablesThatTheSourceLacksAndViewsAreLeftOut) {
  {
    ConfigMaker config_db(config());
    for (const char* table : {"missing", "view", "present"}) {
      config_db.AddTable(table);
      config_db.AddField(table, {"a", "INTEGER", 0, 0, 0});
    }
    config_db.AddField("unlisted", {"a", "INTEGER", 0, 0, 0});
    config_db.AddLayout("missing", "CREATE TABLE missing(a)");
  }
  SqliteMaker(source()).Run(
      "CREATE TABLE present(a); CREATE TABLE unlisted(a); CREATE VIEW view AS SELECT a FROM "
      "present");
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(TableNames(), (TextRows{{"present"}}));
}

TEST_F(LiveScan, RowsOfTheLiveLogAreReadAndTheSourceStaysUntouched) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
    db.StartLog();
    AddMessages(db, 4, 6);
    db.Run("DELETE FROM message WHERE _id = 2");
  }
  const std::string db_bytes = ReadBytes(source());
  const std::string log_bytes = ReadBytes(source_log());
  EXPECT_EQ(Found(kLive), MessageBodies(1, 1) + MessageBodies(3, 6));
  EXPECT_EQ(ReadBytes(source()), db_bytes);
  EXPECT_EQ(ReadBytes(source_log()), log_bytes);
  EXPECT_EQ(ReadBytes(kept_log()), log_bytes);
}

TEST_F(LiveScan, NothingIsScannedInTheLastRangeButTheResultIsMade) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
  }
  SqliteMaker(result()).Run("CREATE TABLE old(a)");
  EXPECT_EQ(RunScan(kNothing), 0);
  EXPECT_TRUE(LinesMatch({"info Enter Scan", "error Success", "info End Scan"}, LogLines()));
  EXPECT_EQ(TableNames(), (TextRows{{"message"}}));
  EXPECT_TRUE(ResultRows("SELECT * FROM message").empty());
}

TEST_F(LiveScan, SystemsAndApplicationsWithoutANameHaveNoTables) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
  }
  for (const ScanRequest& request : {ScanRequest{2, 1, {}}, ScanRequest{0, 12, {}}}) {
    request_ = request;
    EXPECT_EQ(RunScan(kLive), 0);
    EXPECT_TRUE(TableNames().empty());
    EXPECT_EQ(RunScan(kAll), 1012);  // no log, and the main file takes no part
  }
  {
    SqliteMaker db(source());
    db.StartLog();
    AddMessages(db, 4, 4);
  }
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_TRUE(TableNames().empty());
}

TEST_F(LiveScan, SystemsAndApplicationsTakeTheirOwnConfiguration) {
  {
    ConfigMaker config_db(config(), {"ios", "kakaotalk", 1});
    ConfigureMessages(config_db);
  }
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
  }
  request_ = {1, 11, {}};
  EXPECT_EQ(Found(kLive), MessageBodies(1, 3));
  request_ = {0, 11, {}};
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_TRUE(TableNames().empty());
}

}  // namespace
