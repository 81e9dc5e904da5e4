// Deleted records in the write-ahead log.
#include <vexasqlitesdk.h>

#include <filesystem>

#include "support/scan_fixture.h"

namespace fs = std::filesystem;

namespace {

class LogScan : public ScanFixture {};

TEST_F(LogScan, TheLinesOfAWholeScan) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    db.StartLog();
    AddMessages(db, 1, 5);
  }
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_TRUE(
      LinesMatch({"info Enter Scan", "info Enter ScanSqlite::Scan",
                  "info Enter ScanSqlite::ScanExist", "info End ScanSqlite::ScanExist",
                  "info End ScanSqlite::Scan", "info Enter ScanSqlite::ScanDeleted",
                  "info End ScanSqlite::ScanDeleted", "info file data buf src path : " + source(),
                  "info " + source() + " ScanSqliteWal Init Succeed",
                  "info file data buf src path : " + source(), "info End Scan"},
                 LogLines()));
}

TEST_F(LogScan, RowsThatOnlyTheLogEverHeldComeBack) {
  for (const int is_scan_database : {0, 1}) {
    fs::remove(config());
    fs::remove(source());
    fs::remove(source_log());
    MakeMessageConfig(config(), {}, is_scan_database);
    {
      SqliteMaker db(source());
      db.Run(MessageTable());
      db.StartLog();
      AddMessages(db, 1, 20);
      db.Run("DELETE FROM message WHERE _id > 10");
    }
    EXPECT_EQ(Found(kLive), MessageBodies(1, 10));
    EXPECT_EQ(Found(kAll), MessageBodies(1, 20));
    fs::remove_all(temp());
    fs::create_directory(temp());
    EXPECT_EQ(Found(kDeleted), MessageBodies(1, 20));
  }
}

// Such a file states no text encoding yet, and what is not UTF-8 is read as UTF-16.
TEST_F(LogScan, AMainFileThatWasNeverWrittenStatesNoEncoding) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.StartLog();
    db.Run(MessageTable());
    AddMessages(db, 1, 20);
  }
  ASSERT_EQ(BigEndianAt(ReadBytes(source()), 56, 4), 0U);
  EXPECT_EQ(Found(kLive), MessageBodies(1, 20));
}

TEST_F(LogScan, OlderGenerationsOfTheLogAreCarved) {
  MakeMessageConfig(config(), {}, 0);
  {
    SqliteMaker db(source());
    db.Run("PRAGMA page_size=1024");
    db.Run(MessageTable());
    db.StartLog();
    AddMessages(db, 1, 200);
    db.Run("PRAGMA wal_checkpoint(RESTART)");
    // A short second generation leaves most frames of the first behind it.
    db.Run("DELETE FROM message; UPDATE message SET body = ''");
    db.Run("PRAGMA wal_checkpoint(RESTART)");
    AddMessages(db, 1000, 1000);
  }
  const std::vector<std::string> found = Found(kAll);
  EXPECT_GT(found.size(), 100U);
  EXPECT_EQ(Found(kLive), MessageBodies(1000, 1000));
}

TEST_F(LogScan, ALastPartialFrameIsNotSaved) {
  MakeMessageConfig(config(), {}, 0);
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    db.StartLog();
    AddMessages(db, 1, 5);
    AddMessages(db, 6, 10);
  }
  const std::string log = ReadBytes(source_log());
  ASSERT_EQ(log.size(), 32U + 2 * 4120);
  EXPECT_EQ(Found(kDeleted), MessageBodies(1, 10));
  for (const size_t cut : {1U, 100U, 4119U, 4100U}) {
    WriteBytes(source_log(), log.substr(0, log.size() - cut));
    fs::remove_all(temp());
    fs::create_directory(temp());
    EXPECT_EQ(Found(kDeleted), MessageBodies(1, 5)) << cut;
  }
}

}  // namespace
