// Scans that cannot be made or finished: the result code, every line of the log, and what is left.
#include <sqlite3.h>
#include <vexasqlitesdk.h>

#include <filesystem>
#include <stdexcept>

#include "e2e/sqlite_hooks.h"
#include "support/scan_fixture.h"

namespace fs = std::filesystem;

namespace {

class ScanFailures : public ScanFixture {
 protected:
  void MakeSource(bool with_log) {
    SqliteMaker db(source());
    if (with_log) db.StartLog();
    db.Run(MessageTable());
    AddMessages(db, 1, 5);
  }

  // Lines of a scan that fails in its preparation, between "Enter Scan" and the driver's line.
  static std::vector<std::string> Failed(const std::vector<std::string>& lines) {
    std::vector<std::string> all = {"info Enter Scan"};
    all.insert(all.end(), lines.begin(), lines.end());
    all.emplace_back("error [src/vexasqlitesdk], at line # init ScanSqlite fail");
    all.emplace_back("info End Scan");
    return all;
  }
};

TEST_F(ScanFailures, AMissingSourceCostsTheOldResult) {
  MakeMessageConfig(config());
  SqliteMaker(result()).Run("CREATE TABLE old(a)");
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error Success",
              "error [src/common/common], at 86 line, Fail to load file No such file or "
              "directory, " +
                  source(),
              "error [src/scansqlite], at 165 line, Fail to load sqlite db, db file " + source()}),
      LogLines()));
  EXPECT_TRUE(ResultRows("SELECT name FROM sqlite_master").empty());
}

TEST_F(ScanFailures, ASourceShorterThanAHeaderCannotBeLoaded) {
  MakeMessageConfig(config());
  WriteBytes(source(), std::string("SQLite format 3\0", 16) + std::string(83, 'x'));
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error [src/scansqlite], at 165 line, Fail to load sqlite db, db file " + source()}),
      LogLines()));
}

TEST_F(ScanFailures, AnotherMagicIsNoDatabase) {
  MakeMessageConfig(config());
  // The last one differs only in the zero byte behind the 15 characters.
  for (const std::string& magic : {std::string(16, 'x'), std::string("SQLite format 3 ")}) {
    WriteBytes(source(), magic + std::string(84, '\0'));
    fs::remove(result());
    EXPECT_EQ(RunScan(kAll), 1003);
    EXPECT_TRUE(LinesMatch(
        Failed(
            {"error [src/scansqlite], at 313 line, not a valid SQLite DB file.",
             "error [src/scansqlite], at 170 line, Fail to check sqlite db, db file " + source()}),
        LogLines()));
  }
}

TEST_F(ScanFailures, APageSizeOfZeroIsAHeaderFailure) {
  MakeMessageConfig(config());
  WriteBytes(source(), std::string("SQLite format 3\0", 16) + std::string(4096, '\0'));
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error [src/scansqlite], at 176 line, Fail to get sqlite db headr info, db file " +
              source()}),
      LogLines()));
}

TEST_F(ScanFailures, AConfigurationThatCannotBeOpened) {
  MakeSource(false);
  fs::create_directory(config());
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error [src/sqliteconfig], at # line, Fail to open config db " + config(),
              "error [src/scansqlite], at # line, Fail to create sqlite config object, config "
              "file " +
                  config()}),
      LogLines()));
}

TEST_F(ScanFailures, AResultThatCannotBeOpenedNamesTheConfigurationAsWell) {
  MakeSource(false);
  MakeMessageConfig(config());
  fs::create_directory(result());
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error [src/storager], at # line, open database fail, error code : 14, " + result() +
                  ".",
              "error [src/scansqlite], at # line, Fail to create sqlite config object, config "
              "file " +
                  config()}),
      LogLines()));
  EXPECT_TRUE(fs::is_directory(result()));
}

TEST_F(ScanFailures, AMissingConfigurationIsCreatedEmptyAndHasNoTables) {
  MakeSource(false);
  request_.system_type = 1;
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error [src/sqliteconfig], at # line, open database fail.",
              "error [src/scansqlite], at # line, Fail to init need scan table, table tyep 1, src "
              "db file " +
                  source()}),
      LogLines()));
  EXPECT_TRUE(fs::exists(config()));
}

TEST_F(ScanFailures, AWorkingCopyThatCannotBeOpenedForItsColumns) {
  MakeSource(false);
  MakeMessageConfig(config());
  const SqliteHooks hooks(OnNthOpen(working_db(), 1, [] { return false; }));
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed(
          {"error [src/scansqlite], at 2346 line, open database fail",
           "error [src/scansqlite], at # line, Fail to init column info, src db file " + source()}),
      LogLines()));
}

TEST_F(ScanFailures, AConfigurationWithoutResultFields) {
  MakeSource(false);
  MakeMessageConfig(config());
  SqliteMaker(config()).Run("DROP TABLE result_field_info");
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error [src/scansqlite], at # line, Fail to get need query table, table type 0, src "
              "db file " +
              source()}),
      LogLines()));
}

TEST_F(ScanFailures, AConfigurationWithoutScanTypes) {
  MakeSource(false);
  MakeMessageConfig(config());
  SqliteMaker(config()).Run("DROP TABLE scan_type_info");
  EXPECT_EQ(RunScan(kAll), 1003);
  EXPECT_TRUE(LinesMatch(
      Failed({"error SQLite Error : no such table: scan_type_info",
              "error [src/scansqlite], at # line, Fail to get need scan type, table type 0, src "
              "db file " +
                  source()}),
      LogLines()));
}

TEST_F(ScanFailures, AConfigurationWithoutLayoutsOrFeaturesStillScans) {
  MakeSource(false);
  MakeMessageConfig(config());
  SqliteMaker(config()).Run("DROP TABLE create_table_sql; DROP TABLE field_features");
  EXPECT_EQ(Found(kLive), MessageBodies(1, 5));
}

TEST_F(ScanFailures, AWorkingCopyThatCannotBeOpenedForItsRowsEndsTheScan) {
  MakeSource(false);
  MakeMessageConfig(config());
  for (const int range : {kAll, kLive}) {
    fs::remove(result());
    const SqliteHooks hooks(OnNthOpen(working_db(), 2, [] { return false; }));
    EXPECT_EQ(RunScan(range), 1004);
    std::vector<std::string> lines = {"info Enter ScanSqlite::ScanExist",
                                      "info End ScanSqlite::ScanExist",
                                      "error [src/scansqlite], at # line database open fail."};
    if (range == kAll) {
      lines.insert(lines.begin(), "info Enter ScanSqlite::Scan");
      lines.emplace_back("info End ScanSqlite::Scan");
    }
    lines.insert(lines.begin(), "info Enter Scan");
    lines.emplace_back("info End Scan");
    EXPECT_TRUE(LinesMatch(lines, LogLines()));
  }
}

TEST_F(ScanFailures, ASourceThatVanishesDuringTheScan) {
  for (const int is_scan_database : {0, 1}) {
    MakeSource(true);
    fs::remove(config());
    fs::remove(result());
    MakeMessageConfig(config(), {}, is_scan_database);
    const SqliteHooks hooks(OnNthOpen(working_db(), 1, [this] { return fs::remove(source()); }));
    EXPECT_EQ(RunScan(kDeleted), 1012);
    std::vector<std::string> lines = {"info Enter Scan", "info Enter ScanSqlite::ScanDeleted",
                                      "info End ScanSqlite::ScanDeleted"};
    for (const char* function : {"DeleteScanSqliteWalFile", "DeletedScanSqliteFile"}) {
      lines.push_back("info file data buf src path : " + source());
      lines.emplace_back("error Fail to load file 2, No such file or directory");
      lines.push_back(
          "error create file data buf fail File : src/scansqlite, Function : ScanSqlite::" +
          std::string(function) + ", Line : #, ");
      if (is_scan_database == 0) break;
    }
    lines.emplace_back("info End Scan");
    EXPECT_TRUE(LinesMatch(lines, LogLines()));
    fs::remove(source_log());
  }
}

TEST_F(ScanFailures, ASourceThatIsEmptiedDuringTheScan) {
  MakeSource(false);
  MakeMessageConfig(config(), {}, 0);
  const SqliteHooks hooks(OnNthOpen(working_db(), 1, [this] {
    fs::resize_file(source(), 0);
    return true;
  }));
  EXPECT_EQ(RunScan(kDeleted), 1012);
  const std::vector<std::string> lines = LogLines();
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines[4].substr(0, 18), "error file size 0,");
  EXPECT_EQ(lines[5].substr(0, 61),
            "error create file data buf fail File : src/scansqlite, Functi");
}

TEST_F(ScanFailures, NoLogAndNoMainFileScanGives1012AlthoughTheSourceIsSound) {
  MakeSource(false);
  MakeMessageConfig(config(), {}, 0);
  EXPECT_EQ(RunScan(kDeleted), 1012);
  EXPECT_TRUE(
      LinesMatch({"info Enter Scan", "info Enter ScanSqlite::ScanDeleted",
                  "info End ScanSqlite::ScanDeleted", "info file data buf src path : " + source(),
                  "error Fail to load file No such file or directory",
                  "error Load file error! File : src/scansqlite, Function : "
                  "ScanSqlite::DeleteScanSqliteWalFile, Line : #, ",
                  "info End Scan"},
                 LogLines()));
  fs::remove(result());
  EXPECT_EQ(RunScan(kAll), 1012);
  EXPECT_EQ(ResultRows("SELECT count(*) FROM message"), (TextRows{{"5"}}));
  EXPECT_EQ(RunScan(kLive), 0);
}

TEST_F(ScanFailures, AnEmptyLogIsNamedWithTheMangledFunctionAndTheScanGoesOn) {
  MakeSource(false);
  WriteBytes(source_log(), "");
  MakeMessageConfig(config(), {}, 0);
  EXPECT_EQ(RunScan(kDeleted), 1012);
  EXPECT_TRUE(LinesMatch(
      {"info Enter Scan",
       "error Load file error! File : src/scansqlite, Function : "
       "_ZN10ScanSqlite17GetWALFilePageMapENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE, "
       "Line : 270, ",
       "error [src/scansqlite], at 188 line, Fail to wal page info, db file " + kept_log(),
       "info Enter ScanSqlite::ScanDeleted", "info End ScanSqlite::ScanDeleted",
       "info file data buf src path : " + source(),
       "error Load file error! File : src/scansqlite, Function : "
       "ScanSqlite::DeleteScanSqliteWalFile, Line : #, ",
       "info End Scan"},
      LogLines()));
}

TEST_F(ScanFailures, ALogOfItsHeaderAloneGives1012AfterItWasLoaded) {
  MakeSource(false);
  WriteBytes(source_log(), std::string(32, '\0'));
  MakeMessageConfig(config(), {}, 0);
  EXPECT_EQ(RunScan(kDeleted), 1012);
  EXPECT_TRUE(LinesMatch(
      {"info Enter Scan",
       "error [src/scansqlite], at 188 line, Fail to wal page info, db file " + kept_log(),
       "info Enter ScanSqlite::ScanDeleted", "info End ScanSqlite::ScanDeleted",
       "info file data buf src path : " + source(),
       "info " + source() + " ScanSqliteWal Init Succeed", "info End Scan"},
      LogLines()));
}

}  // namespace
