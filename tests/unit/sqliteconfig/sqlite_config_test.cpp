// The queries to the configuration database, on hand-made rows.
#include "sqliteconfig/sqlite_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "support/log_capture.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr int32_t kAndroid = 0;
constexpr int32_t kIos = 1;
constexpr int32_t kContact = 0;
constexpr int32_t kSms = 1;
constexpr int32_t kAnyVersion = std::numeric_limits<int32_t>::max();

constexpr const char* kTables =
    "create table scan_table_info(system_type, data_type, table_name, is_small_table, "
    "is_virtual_table, scan_type, flexible_cnt, need_guess_row_id, need_order_by_rowid);"
    "create table scan_type_info(system_type, data_type, is_scan_database);"
    "create table create_table_sql(system_type, data_type, system_version, table_name, sql);"
    "create table field_features(system_type, data_type, table_name, field_name, is_not_null, "
    "field_type, min, max, item_range, item_not_exist_value, field_type_candidate);"
    "create table result_field_info(system_type, data_type, table_name, field_name, "
    "field_type_text, field_type, is_unique_field, is_row_id_field);";

class SqliteConfigTest : public testing::Test {
 protected:
  SqliteConfigTest() {
    Run(kTables);
    config_ = SqliteConfig::Create(Path());
  }

  std::string Path() const { return folder_.File("VexaConfiger.db"); }

  // On a connection of its own, as the library never writes the configuration.
  void Run(const std::string& sql) const {
    SqliteConnection connection(Path());
    ASSERT_EQ(connection.Open(""), 0);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(connection.handle(), sql.c_str(), nullptr, nullptr, &error), 0) << error;
    sqlite3_free(error);
  }

  TempFolder folder_;
  LogCapture log_;
  std::unique_ptr<SqliteConfig> config_;
};

// --- Opening ---

TEST_F(SqliteConfigTest, MissingFileIsCreatedEmptyAndItsFirstQueryFails) {
  const std::string path = folder_.File("new.db");
  const auto config = SqliteConfig::Create(path);
  ASSERT_NE(config, nullptr);
  EXPECT_TRUE(fs::exists(path));
  EXPECT_THAT(log_.Lines(), IsEmpty());
  std::vector<ScanTableInfo> tables;
  EXPECT_FALSE(config->GetNeedScanTables(kAndroid, kSms, tables));
  const std::vector<LogLine> lines = log_.Lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, 3);
  EXPECT_THAT(lines[0].message,
              MatchesRegex("\\[src/sqliteconfig\\], at [0-9]+ line, open database fail\\."));
}

TEST_F(SqliteConfigTest, FileThatCannotBeOpenedGivesNothing) {
  const std::string path = folder_.File("missing") + "/VexaConfiger.db";
  EXPECT_EQ(SqliteConfig::Create(path), nullptr);
  const std::vector<LogLine> lines = log_.Lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, 3);
  EXPECT_THAT(lines[0].message,
              testing::AllOf(testing::StartsWith("[src/sqliteconfig], at "),
                             testing::EndsWith(" line, Fail to open config db " + path)));
}

TEST_F(SqliteConfigTest, JournalModeBecomesWriteAheadLog) {
  std::ifstream file(Path(), std::ios::binary);
  file.seekg(18);  // the read and write versions of the file header; 2 is WAL
  EXPECT_EQ(file.get(), 2);
  EXPECT_EQ(file.get(), 2);
}

TEST_F(SqliteConfigTest, FileThatIsNoDatabaseFailsInItsQueries) {
  std::ofstream(folder_.File("text")) << std::string(4096, 'x');
  const auto config = SqliteConfig::Create(folder_.File("text"));
  ASSERT_NE(config, nullptr);
  std::vector<ScanTableInfo> tables;
  EXPECT_FALSE(config->GetNeedScanTables(kAndroid, kSms, tables));
  bool is_scan_database = true;
  log_.Clear();
  EXPECT_FALSE(config->GetScanType(kAndroid, kSms, is_scan_database));
  EXPECT_TRUE(is_scan_database);
  EXPECT_THAT(log_.Lines(), ElementsAre(LogLine{3, "SQLite Error : file is not a database"}));
}

TEST_F(SqliteConfigTest, LockedConfigurationIsWaitedFor) {
  // A rollback journal, in which a writer keeps readers out.
  Run("insert into scan_type_info values('android', 'sms', 1)");
  config_.reset();
  Run("PRAGMA journal_mode=DELETE");
  SqliteConnection locker(Path());
  ASSERT_EQ(locker.Open(""), 0);
  ASSERT_EQ(sqlite3_exec(locker.handle(), "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), 0);
  // Its pragma has no busy handler and fails without a word, the queries wait.
  config_ = SqliteConfig::Create(Path());
  ASSERT_NE(config_, nullptr);
  std::thread release([&locker] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    sqlite3_exec(locker.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  });
  bool is_scan_database = false;
  const bool answered = config_->GetScanType(kAndroid, kSms, is_scan_database);
  release.join();
  EXPECT_TRUE(answered);
  EXPECT_TRUE(is_scan_database);
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

// --- Tables to scan ---

TEST_F(SqliteConfigTest, TablesComeInRowOrderWithAllColumns) {
  Run("insert into scan_table_info values"
      "('android', 'sms', 'zebra', 1, 0, 2, 3, 4, 5),"
      "('android', 'contact', 'other', 1, 1, 1, 1, 1, 1),"
      "('android', 'sms', 'ant', 0, 1, -1, -2, 1, 0),"
      "('ios', 'sms', 'message', 1, 1, 1, 1, 1, 1),"
      "('ANDROID', 'sms', 'loud', 1, 1, 1, 1, 1, 1)");
  std::vector<ScanTableInfo> tables(1);
  ASSERT_TRUE(config_->GetNeedScanTables(kAndroid, kSms, tables));
  ASSERT_EQ(tables.size(), 3U);  // appended to what was there
  const ScanTableInfo& zebra = tables[1];
  EXPECT_EQ(zebra.table_name, "zebra");
  EXPECT_TRUE(zebra.is_small_table);
  EXPECT_FALSE(zebra.is_virtual_table);
  EXPECT_EQ(zebra.scan_type, 2);
  EXPECT_EQ(zebra.flexible_cnt, 3);
  EXPECT_EQ(zebra.need_guess_row_id, 4);
  EXPECT_EQ(zebra.need_order_by_rowid, 5);
  const ScanTableInfo& ant = tables[2];
  EXPECT_EQ(ant.table_name, "ant");
  EXPECT_FALSE(ant.is_small_table);
  EXPECT_TRUE(ant.is_virtual_table);
  EXPECT_EQ(ant.scan_type, -1);
  EXPECT_EQ(ant.flexible_cnt, -2);
  EXPECT_EQ(ant.need_guess_row_id, 1);
  EXPECT_EQ(ant.need_order_by_rowid, 0);
}

TEST_F(SqliteConfigTest, OnlyOneIsTrueInTheTableFlags) {
  const struct {
    const char* written;
    bool is_true;
  } kCases[] = {{"1", true},     {"0", false},  {"2", false},     {"-1", false},
                {"null", false}, {"'1'", true}, {"'yes'", false}, {"4294967297", true}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.written);
    const std::string value = row.written;
    Run("delete from scan_table_info; delete from scan_type_info;"
        "insert into scan_table_info values('ios', 'sms', 't', " +
        value + ", " + value +
        ", 0, 0, 0, 0);"
        "insert into scan_type_info values('ios', 'sms', " +
        value + ")");
    std::vector<ScanTableInfo> tables;
    ASSERT_TRUE(config_->GetNeedScanTables(kIos, kSms, tables));
    ASSERT_EQ(tables.size(), 1U);
    EXPECT_EQ(tables[0].is_small_table, row.is_true);
    EXPECT_EQ(tables[0].is_virtual_table, row.is_true);
    bool is_scan_database = !row.is_true;
    EXPECT_TRUE(config_->GetScanType(kIos, kSms, is_scan_database));
    EXPECT_EQ(is_scan_database, row.is_true);
  }
}

TEST_F(SqliteConfigTest, NullColumnsOfATableAreEmptyAndZero) {
  Run("insert into scan_table_info(system_type, data_type) values('ios', 'sms')");
  std::vector<ScanTableInfo> tables;
  ASSERT_TRUE(config_->GetNeedScanTables(kIos, kSms, tables));
  ASSERT_EQ(tables.size(), 1U);
  EXPECT_EQ(tables[0].table_name, "");
  EXPECT_EQ(tables[0].scan_type, 0);
  EXPECT_EQ(tables[0].flexible_cnt, 0);
  EXPECT_EQ(tables[0].need_guess_row_id, 0);
  EXPECT_EQ(tables[0].need_order_by_rowid, 0);
}

TEST_F(SqliteConfigTest, CodesWithoutATextMatchTheEmptyTextOnly) {
  Run("insert into scan_table_info(system_type, data_type, table_name) values"
      "('android', 'sms', 'a'), (null, 'sms', 'b'), ('android', null, 'c'), ('', 'sms', 'd'),"
      "('android', '', 'e')");
  const struct {
    int32_t system_type;
    int32_t data_type;
    std::vector<std::string> tables;
  } kCases[] = {{2, kSms, {"d"}}, {kAndroid, 12, {"e"}}, {2, 12, {}},
                {-1, -1, {}},     {kIos, kSms, {}},      {kAndroid, kSms, {"a"}}};
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::to_string(row.system_type) + " " + std::to_string(row.data_type));
    std::vector<ScanTableInfo> tables;
    EXPECT_TRUE(config_->GetNeedScanTables(row.system_type, row.data_type, tables));
    std::vector<std::string> names;
    for (const ScanTableInfo& table : tables) names.push_back(table.table_name);
    EXPECT_EQ(names, row.tables);
  }
}

TEST_F(SqliteConfigTest, ErrorBetweenRowsReadsLikeTheirEnd) {
  // The third row of the view can't be computed.
  Run("drop table scan_table_info;"
      "create view scan_table_info as select 'ios' as system_type, 'sms' as data_type,"
      " case n when 3 then abs(-9223372036854775807 - 1) else 't' || n end as table_name,"
      " 0 as is_small_table, 0 as is_virtual_table, 0 as scan_type, 0 as flexible_cnt,"
      " 0 as need_guess_row_id, 0 as need_order_by_rowid"
      " from (select 1 as n union all select 2 union all select 3 union all select 4)");
  std::vector<ScanTableInfo> tables;
  EXPECT_TRUE(config_->GetNeedScanTables(kIos, kSms, tables));
  EXPECT_EQ(tables.size(), 2U);
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

// --- Whether the main file is carved ---

TEST_F(SqliteConfigTest, ApplicationWithoutAScanTypeIsNotCarved) {
  Run("insert into scan_type_info values('android', 'sms', 1)");
  bool is_scan_database = true;
  EXPECT_TRUE(config_->GetScanType(kAndroid, kContact, is_scan_database));
  EXPECT_FALSE(is_scan_database);
  EXPECT_TRUE(config_->GetScanType(kAndroid, kSms, is_scan_database));
  EXPECT_TRUE(is_scan_database);
  EXPECT_TRUE(config_->GetScanType(2, 12, is_scan_database));
  EXPECT_FALSE(is_scan_database);
}

TEST_F(SqliteConfigTest, FirstScanTypeCounts) {
  Run("insert into scan_type_info values('android', 'sms', 1), ('android', 'sms', 0)");
  bool is_scan_database = false;
  EXPECT_TRUE(config_->GetScanType(kAndroid, kSms, is_scan_database));
  EXPECT_TRUE(is_scan_database);
}

TEST_F(SqliteConfigTest, MissingScanTypeTableIsLoggedWithTheTextOfSqlite) {
  Run("drop table scan_type_info");
  for (const bool before : {true, false}) {
    bool is_scan_database = before;
    log_.Clear();
    EXPECT_FALSE(config_->GetScanType(kAndroid, kSms, is_scan_database));
    EXPECT_EQ(is_scan_database, before);
    EXPECT_THAT(log_.Lines(),
                ElementsAre(LogLine{3, "SQLite Error : no such table: scan_type_info"}));
  }
}

TEST_F(SqliteConfigTest, FailingStepOfTheScanTypeIsLogged) {
  Run("drop table scan_type_info; create view scan_type_info as select 'ios' as system_type,"
      " 'sms' as data_type, abs(-9223372036854775807 - 1) as is_scan_database");
  bool is_scan_database = true;
  EXPECT_FALSE(config_->GetScanType(kIos, kSms, is_scan_database));
  EXPECT_TRUE(is_scan_database);
  EXPECT_THAT(log_.Lines(), ElementsAre(LogLine{3, "SQLite Error : integer overflow"}));
}

// --- CREATE texts ---

TEST_F(SqliteConfigTest, CreateTextsUpToTheVersionComeInRowOrder) {
  Run("insert into create_table_sql values"
      "('android', 'sms', 9, 'sms', 'nine'), ('android', 'sms', 4, 'sms', 'four'),"
      "('android', 'sms', 7, 'sms', 'seven'), ('android', 'sms', 7, 'SMS', 'loud'),"
      "('android', 'contact', 1, 'sms', 'contact'), ('ios', 'sms', 1, 'sms', 'ios'),"
      "('android', 'sms', 0, 'sms', null), ('android', 'sms', null, 'sms', 'no version')");
  const struct {
    int32_t version;
    std::vector<std::string> texts;
  } kCases[] = {
      {kAnyVersion, {"nine", "four", "seven", ""}},
      {9, {"nine", "four", "seven", ""}},
      {8, {"four", "seven", ""}},
      {7, {"four", "seven", ""}},
      {4, {"four", ""}},
      {0, {""}},
      {-1, {}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.version);
    std::vector<std::string> texts = {"before"};
    EXPECT_TRUE(config_->GetCreateTableSql(kAndroid, kSms, row.version, "sms", texts));
    std::vector<std::string> expected = {"before"};
    expected.insert(expected.end(), row.texts.begin(), row.texts.end());
    EXPECT_EQ(texts, expected);
  }
}

TEST_F(SqliteConfigTest, TableNameIsBoundAndNotPartOfTheStatement) {
  Run("insert into create_table_sql values('android', 'sms', 1, 'it''s', 'text')");
  std::vector<std::string> texts;
  EXPECT_TRUE(config_->GetCreateTableSql(kAndroid, kSms, 1, "it's", texts));
  EXPECT_TRUE(config_->GetCreateTableSql(kAndroid, kSms, 1, "' or '1'='1", texts));
  EXPECT_THAT(texts, ElementsAre("text"));
}

TEST_F(SqliteConfigTest, MissingCreateTextsLeaveNoTrace) {
  Run("drop table create_table_sql");
  std::vector<std::string> texts;
  EXPECT_TRUE(config_->GetCreateTableSql(kAndroid, kSms, 1, "sms", texts));
  EXPECT_THAT(texts, IsEmpty());
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

// --- Field features ---

using Features = std::unordered_map<std::string, FieldFeatureRow>;

TEST_F(SqliteConfigTest, FeaturesOfATable) {
  Run("insert into field_features values"
      "(0, 'sms', 'sms', 'date', 1, 2, -5000000000, 5000000000, 'a~c', '0x41', 3),"
      "(0, 'sms', 'other', 'b', 1, 1, 1, 1, 'x', 'x', 1),"
      "(1, 'sms', 'sms', 'c', 1, 1, 1, 1, 'x', 'x', 1),"
      "(0, 'contact', 'sms', 'd', 1, 1, 1, 1, 'x', 'x', 1)");
  Features features;
  EXPECT_FALSE(config_->GetFieldFeatures(kAndroid, kSms, "sms", features));
  ASSERT_EQ(features.size(), 1U);
  const FieldFeatureRow& date = features.at("date");
  EXPECT_EQ(date.field_name, "date");
  EXPECT_EQ(date.is_not_null, 1);
  EXPECT_EQ(date.field_type, 2);
  EXPECT_EQ(date.min, -5000000000LL);
  EXPECT_EQ(date.max, 5000000000LL);
  EXPECT_EQ(date.item_range.size(), 3U);
  EXPECT_TRUE(date.item_range.Contains('b'));
  EXPECT_EQ(date.item_not_exist_value.size(), 1U);
  EXPECT_TRUE(date.item_not_exist_value.Contains('A'));
  EXPECT_EQ(date.field_type_candidate, 3);
}

TEST_F(SqliteConfigTest, FirstFeatureRowOfAFieldCounts) {
  Run("insert into field_features(system_type, data_type, table_name, field_name, min) values"
      "(0, 'sms', 'sms', 'a', 1), (0, 'sms', 'sms', 'a', 2), (0, 'sms', 'sms', 'A', 3)");
  Features features;
  EXPECT_FALSE(config_->GetFieldFeatures(kAndroid, kSms, "sms", features));
  ASSERT_EQ(features.size(), 2U);
  EXPECT_EQ(features.at("a").min, 1);
  EXPECT_EQ(features.at("A").min, 3);
}

TEST_F(SqliteConfigTest, NullFeaturesAreZeroAndNoSet) {
  Run("insert into field_features(system_type, data_type, table_name, max) values"
      "(0, 'sms', 'sms', 9)");
  Features features;
  EXPECT_FALSE(config_->GetFieldFeatures(kAndroid, kSms, "sms", features));
  ASSERT_EQ(features.size(), 1U);
  const FieldFeatureRow& row = features.at("");
  EXPECT_EQ(row.is_not_null, 0);
  EXPECT_EQ(row.field_type, 0);
  EXPECT_EQ(row.min, 0);
  EXPECT_EQ(row.max, 9);
  EXPECT_TRUE(row.item_range.empty());
  EXPECT_TRUE(row.item_not_exist_value.empty());
  EXPECT_EQ(row.field_type_candidate, 0);
}

TEST_F(SqliteConfigTest, FeaturesAreFoundByTheNumberOfTheSystem) {
  Run("insert into field_features(system_type, data_type, table_name, field_name) values"
      "('android', 'sms', 'sms', 'a'), (2, 'sms', 'sms', 'b')");
  Features features;
  EXPECT_FALSE(config_->GetFieldFeatures(kAndroid, kSms, "sms", features));
  EXPECT_THAT(features, IsEmpty());
  EXPECT_FALSE(config_->GetFieldFeatures(2, kSms, "sms", features));
  EXPECT_EQ(features.count("b"), 1U);
}

TEST_F(SqliteConfigTest, MissingFeaturesLeaveNoTrace) {
  Run("drop table field_features");
  Features features;
  EXPECT_FALSE(config_->GetFieldFeatures(kAndroid, kSms, "sms", features));
  EXPECT_THAT(features, IsEmpty());
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

// --- Result fields ---

ColumnsByTable LiveColumns() {
  ColumnsByTable columns;
  for (const char* name : {"_id", "address", "body"}) columns["sms"][name] = {};
  for (const char* name : {"_id", "title"}) columns["threads"][name] = {};
  columns[""][""] = {};
  return columns;
}

std::vector<std::string> KeysOf(const auto& map) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : map) keys.push_back(key);
  return keys;
}

TEST_F(SqliteConfigTest, ResultFieldsComeInRowOrderInBothViews) {
  Run("insert into result_field_info values"
      "('android', 'sms', 'threads', 'title', 'TEXT', 2, 0, 0),"
      "('android', 'sms', 'sms', 'body', null, 2, 5, 0),"
      "('android', 'sms', 'sms', '_id', 'INTEGER NOT NULL', 0, 1, 1),"
      "('ios', 'sms', 'sms', 'address', 'TEXT', 2, 1, 0),"
      "('android', 'contact', 'sms', 'address', 'TEXT', 2, 1, 0)");
  NeedQueryTables tables;
  ResultFieldMaps maps;
  ASSERT_TRUE(config_->GetNeedQueryTables(kAndroid, kSms, LiveColumns(), tables, maps));
  EXPECT_THAT(KeysOf(tables), ElementsAre("threads", "sms"));
  EXPECT_THAT(KeysOf(maps), ElementsAre("threads", "sms"));
  const TableFields& fields = *tables.Find("sms");
  ASSERT_EQ(fields.size(), 2U);
  EXPECT_EQ(fields[0].field_name, "body");
  EXPECT_EQ(fields[0].field_type_text, "");
  EXPECT_EQ(fields[0].field_type, 2);
  EXPECT_EQ(fields[0].is_unique_field, 5);
  EXPECT_EQ(fields[1].field_name, "_id");
  EXPECT_EQ(fields[1].field_type_text, "INTEGER NOT NULL");
  EXPECT_EQ(fields[1].field_type, 0);
  EXPECT_EQ(fields[1].is_unique_field, 1);
  const ResultFieldMap& map = *maps.Find("sms");
  EXPECT_THAT(KeysOf(map), ElementsAre("body", "_id"));
  EXPECT_EQ(map.Find("_id")->is_row_id_field, 1);
  EXPECT_EQ(map.Find("_id")->field_name, "_id");
  EXPECT_EQ(map.Find("_id")->field_type, 0);
  EXPECT_EQ(map.Find("_id")->column_index, 0);
  EXPECT_EQ(map.Find("body")->is_row_id_field, 0);
  EXPECT_EQ(map.Find("body")->field_type, 2);
}

TEST_F(SqliteConfigTest, ResultFieldsThatTheSourceLacksAreLeftOut) {
  Run("insert into result_field_info(system_type, data_type, table_name, field_name) values"
      "('ios', 'sms', 'Sms', 'body'), ('ios', 'sms', 'sms', 'Body'),"
      "('ios', 'sms', 'missing', 'body'), ('ios', 'sms', 'sms', 'title'),"
      "('ios', 'sms', 'sms', null), ('ios', 'sms', null, 'body')");
  NeedQueryTables tables;
  ResultFieldMaps maps;
  EXPECT_TRUE(config_->GetNeedQueryTables(kIos, kSms, LiveColumns(), tables, maps));
  EXPECT_TRUE(tables.empty());
  EXPECT_TRUE(maps.empty());
}

TEST_F(SqliteConfigTest, NullNamesOfAResultFieldAreEmptyTexts) {
  Run("insert into result_field_info(system_type, data_type) values('ios', 'sms')");
  NeedQueryTables tables;
  ResultFieldMaps maps;
  EXPECT_TRUE(config_->GetNeedQueryTables(kIos, kSms, LiveColumns(), tables, maps));
  EXPECT_THAT(KeysOf(tables), ElementsAre(""));
  EXPECT_NE(maps.Find("")->Find(""), nullptr);
}

TEST_F(SqliteConfigTest, RepeatedResultFieldStandsTwiceInTheListAndFirstInTheMap) {
  Run("insert into result_field_info values"
      "('ios', 'sms', 'sms', 'body', 'TEXT', 2, 0, 0),"
      "('ios', 'sms', 'sms', 'body', 'BLOB', 3, 1, 1)");
  NeedQueryTables tables;
  ResultFieldMaps maps;
  EXPECT_TRUE(config_->GetNeedQueryTables(kIos, kSms, LiveColumns(), tables, maps));
  EXPECT_EQ(tables.Find("sms")->size(), 2U);
  EXPECT_EQ(maps.Find("sms")->size(), 1U);
  EXPECT_EQ(maps.Find("sms")->Find("body")->field_type, 2);
  EXPECT_EQ(maps.Find("sms")->Find("body")->is_row_id_field, 0);
}

TEST_F(SqliteConfigTest, ResultFieldsAreAddedToWhatIsThere) {
  Run("insert into result_field_info values('ios', 'sms', 'sms', 'body', 'TEXT', 2, 0, 0)");
  NeedQueryTables tables;
  ResultFieldMaps maps;
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(config_->GetNeedQueryTables(kIos, kSms, LiveColumns(), tables, maps));
  }
  EXPECT_EQ(tables.Find("sms")->size(), 2U);
}

TEST_F(SqliteConfigTest, MissingResultFieldsAreFalseInSilence) {
  Run("drop table result_field_info");
  config_ = SqliteConfig::Create(Path());  // one that never saw the table
  NeedQueryTables tables;
  ResultFieldMaps maps;
  EXPECT_FALSE(config_->GetNeedQueryTables(kIos, kSms, LiveColumns(), tables, maps));
  EXPECT_TRUE(tables.empty());
  EXPECT_THAT(log_.Lines(), IsEmpty());
}

}  // namespace
