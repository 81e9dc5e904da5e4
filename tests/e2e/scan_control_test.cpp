// Stop and Pause, before a scan and at chosen moments inside one.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vexasqlitesdk.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "e2e/sqlite_hooks.h"
#include "support/scan_fixture.h"

namespace {

class ScanControl : public ScanFixture {
 protected:
  // Tables "first" and "second", configured in this order, of 300 rows each: several pages.
  void MakeTwoTables(int scan_type = 0) {
    ConfigMaker config_db(config());
    SqliteMaker db(source());
    for (const char* name : {"first", "second"}) {
      ConfigTable flags;
      flags.scan_type = scan_type;
      ConfigureMessages(config_db, flags, name);
      db.Run(MessageTable(name));
      AddMessages(db, 1, 300, name);
    }
    config_db.ScanDatabase(1);
    second_root_ = db.Number("SELECT rootpage FROM sqlite_master WHERE name='second'");
  }

  // Stops the scan when a page of "second" is read for the rows: the first read of its root after
  // the working copy was opened for the second time.
  SqliteHooks StopInsideSecondTable() {
    return SqliteHooks(
        OnNthOpen(working_db(), 2,
                  [this] {
                    reading_rows_ = true;
                    return true;
                  }),
        [this](const std::string& path, sqlite3_int64 offset) {
          if (reading_rows_ && path == working_db() && offset == (second_root_ - 1) * 4096) {
            Stop();
          }
        });
  }

  size_t Count(const std::string& line) const {
    const std::vector<std::string> lines = LogLines();
    return static_cast<size_t>(std::count(lines.begin(), lines.end(), line));
  }

  int64_t Rows(const std::string& table) const {
    return std::stoll(ResultRows("SELECT count(*) FROM " + table).at(0).at(0));
  }

  bool reading_rows_ = false;
  int64_t second_root_ = 0;
};

TEST_F(ScanControl, AStopBeforeAScanLastsUntilUninit) {
  MakeTwoTables();
  const std::vector<std::string> stopped = {
      "info Enter ScanSqlite::Scan",
      "info Enter ScanSqlite::ScanExist",
      "info End ScanSqlite::ScanExist",
      "info ScanSqlite::QueryAndSave Stop",
      "info End ScanSqlite::Scan",
      "info Enter ScanSqlite::ScanDeleted",
      "info End ScanSqlite::ScanDeleted",
      "info file data buf src path : " + source(),
      "error Fail to load file No such file or directory",
      "error Load file error! File : src/scansqlite, Function : "
      "ScanSqlite::DeleteScanSqliteWalFile, Line : #, ",
      "info file data buf src path : " + source(),
      "info ScanSqlite::SqliteFileScan Stop",
      "info ScanSqlite::SqliteFileScan Stop",
      "info End Scan"};
  Stop();
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(RunScan(kAll), 0);
    std::vector<std::string> lines = {"info Enter Scan"};
    if (round > 0) lines.emplace_back("error Success");  // the earlier result is removed
    lines.insert(lines.end(), stopped.begin(), stopped.end());
    EXPECT_TRUE(LinesMatch(lines, LogLines())) << round;
    EXPECT_EQ(Rows("first") + Rows("second"), 0);
    InitSqliteSDK(logs().c_str(), work().c_str());  // changes nothing
  }
  UninitSqliteSDK();
  InitSqliteSDK(logs().c_str(), work().c_str());
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_EQ(Rows("first") + Rows("second"), 600);
}

TEST_F(ScanControl, AStopIsSeenByTheWalkOfTheLog) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    db.StartLog();
    AddMessages(db, 1, 5);
  }
  Stop();
  EXPECT_EQ(RunScan(kDeleted), 0);
  EXPECT_TRUE(
      LinesMatch({"info Enter Scan", "info Enter ScanSqlite::ScanDeleted",
                  "info End ScanSqlite::ScanDeleted", "info file data buf src path : " + source(),
                  "info " + source() + " ScanSqliteWal Init Succeed",
                  "info ScanSqlite::SqliteFileWALWithOverflowScan Stop",
                  "info file data buf src path : " + source(),
                  "info ScanSqlite::SqliteFileScan Stop", "info End Scan"},
                 LogLines()));
  EXPECT_EQ(Rows("message"), 0);
}

TEST_F(ScanControl, AStopAfterPauseEndsTheScanWhenNoWalkHasSeenThePause) {
  MakeTwoTables();
  Pause();
  EXPECT_EQ(RunScan(kLive), 0);  // live records know no pause
  EXPECT_EQ(Rows("first") + Rows("second"), 600);
  Stop();
  EXPECT_EQ(RunScan(kDeleted), 0);
}

TEST_F(ScanControl, AStopBetweenRowsLosesTheTableInProgressOnly) {
  MakeTwoTables();
  const SqliteHooks hooks = StopInsideSecondTable();
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(Count("info ScanSqlite::GetNeedQueryTableInfo Stop"), 1U);
  EXPECT_EQ(Count("info ScanSqlite::QueryAndSave Stop"), 0U);  // it was the last table
  EXPECT_EQ(Rows("first"), 300);
  EXPECT_EQ(Rows("second"), 0);
}

TEST_F(ScanControl, RowsReadBeforeAStopAreKeptByTheCommitOfTheDeletedScan) {
  MakeTwoTables();
  // Stops at the third page that is read for the first table's rows.
  int reads = 0;
  const SqliteHooks hooks(OnNthOpen(working_db(), 2,
                                    [this] {
                                      reading_rows_ = true;
                                      return true;
                                    }),
                          [this, &reads](const std::string& path, sqlite3_int64 offset) {
                            if (!reading_rows_ || path != working_db() || offset < 4096) return;
                            if (++reads == 4) Stop();
                          });
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_EQ(Count("info ScanSqlite::GetNeedQueryTableInfo Stop"), 1U);
  EXPECT_EQ(Count("info ScanSqlite::QueryAndSave Stop"), 1U);
  EXPECT_GT(Rows("first"), 0);
  EXPECT_LT(Rows("first"), 300);
  EXPECT_EQ(Rows("second"), 0);
}

TEST_F(ScanControl, RowsReadBeforeAStopAreLostWhenTheDeletedScanTakesNoTable) {
  MakeTwoTables(1);
  const SqliteHooks hooks = StopInsideSecondTable();
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_EQ(Rows("first"), 300);
  EXPECT_EQ(Rows("second"), 0);
  EXPECT_EQ(Count("info ScanSqlite::SqliteFileScan Stop"), 0U);
}

TEST_F(ScanControl, AStopFromAnotherThreadEndsAWalk) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 5);
  }
  std::filesystem::resize_file(source(), 64 << 20);
  std::thread stopper([this] {
    while (Count("info file data buf src path : " + source()) < 2) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Stop();
  });
  EXPECT_EQ(RunScan(kDeleted), 0);
  stopper.join();
  EXPECT_EQ(Count("info ScanSqlite::SqliteFileScan Stop"), 1U);
}

// What a child process does: pauses, or stops a scan that has seen the pause.
void ScanInChild(const std::string& json, bool stop_as_well) {
  Pause();
  std::thread stopper;
  if (stop_as_well) {
    stopper = std::thread([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      Stop();
    });
  }
  int context = 0;
  Scan(json.data(), static_cast<int>(json.size()), &context);
  _exit(0);
}

TEST_F(ScanControl, APauseThatAWalkHasSeenIsFinal) {
  MakeTwoTables();
  for (const bool stop_as_well : {false, true}) {
    ForgetLog();
    const std::string json = Json(kAll);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) ScanInChild(json, stop_as_well);
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WNOHANG), 0) << "the scan has ended";
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(LogLines().back(), stop_as_well ? std::string("info End Stop")
                                              : "info file data buf src path : " + source());
  }
}

}  // namespace
