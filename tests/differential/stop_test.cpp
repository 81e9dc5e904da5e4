#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "common/common/scan_control.h"
#include "differential/both_scans.h"
#include "reference/plain_scan.h"
#include "support/log_capture.h"
#include "support/sqlite_maker.h"

namespace differential {
namespace {

// Stops the scan when a number of rows has gone into its result.
class StopAfter {
 public:
  StopAfter(sqlite3* result, int rows) : result_(result), left_(rows) {
    sqlite3_update_hook(result_, OnChange, this);
  }
  ~StopAfter() { sqlite3_update_hook(result_, nullptr, nullptr); }
  StopAfter(const StopAfter&) = delete;
  StopAfter& operator=(const StopAfter&) = delete;

 private:
  static void OnChange(void* self, int change, const char*, const char*, sqlite3_int64) {
    if (change != SQLITE_INSERT) return;
    if (--static_cast<StopAfter*>(self)->left_ == 0) WriteScanControl(kScanStopped);
  }

  sqlite3* result_;
  int left_;
};

// What is there after a scan that was stopped, and what it said.
struct Stopped {
  TextRows rows;
  std::vector<std::string> log;

  bool operator==(const Stopped&) const = default;
};

class StopTest : public testing::Test {
 protected:
  StopTest() { g_scan_control = std::make_unique<std::atomic<int32_t>>(kScanRuns); }
  ~StopTest() override { g_scan_control.reset(); }

  // `result_of` gives the connection of the rows, once the scan is prepared.
  template <typename Result, typename ScanDeleted>
  Stopped Run(ScanSqliteProbe& probe, const Result& result_of, int rows,
              const ScanDeleted& scan_deleted) {
    WriteScanControl(kScanRuns);
    std::filesystem::remove(scans_.context().dest_db_path);
    EXPECT_EQ(probe.Init(), kScanSucceeded);
    const LogCapture log;
    {
      const StopAfter stop(result_of(), rows);
      scan_deleted();
    }
    SqliteMaker result(scans_.context().dest_db_path);
    Stopped stopped;
    for (const AppTable& table : application_.tables) {
      const TextRows found = result.Rows("SELECT rowid, * FROM " + table.name);
      stopped.rows.insert(stopped.rows.end(), found.begin(), found.end());
    }
    for (const std::string& line : log.Messages()) {
      if (line.find(" Stop") != std::string::npos) stopped.log.push_back(line);
    }
    return stopped;
  }

  template <typename ScanDeleted>
  Stopped RunLibrary(ScanSqliteProbe& probe, int rows, const ScanDeleted& scan_deleted) {
    return Run(
        probe, [&probe] { return probe.storager().handle(); }, rows, scan_deleted);
  }

  template <typename ScanDeleted>
  Stopped RunPlain(PlainScan& scan, int rows, const ScanDeleted& scan_deleted) {
    return Run(
        scan.probe(), [&scan] { return scan.result().handle(); }, rows, scan_deleted);
  }

  BothScans scans_;
  Application application_;
};

// A stop takes effect at the end of the page whose rows are being saved, in a pass that sweeps as
// well as in one that visits what an earlier sweep left for it.
TEST_F(StopTest, TakesEffectAtTheNextPage) {
  Dice dice(11);
  application_ = {{MessagesTable("first"), MessagesTable("second", 21)}, 1, {}};
  for (AppTable& table : application_.tables) {
    for (ConfigField& field : table.fields) field.is_unique = 0;
  }
  scans_.Configure(application_);
  SourceShape shape;
  shape.page_size = 512;
  shape.rows = 40;
  shape.with_log = true;
  Source source = MakeSource(dice, application_, shape);
  AppendRandomPages(dice, source, 3);
  PlantRecords(dice, application_, source.db, 20, 2 * PageSizeOf(source.db));
  scans_.SetSource(source);
  size_t rows_of_all = 0;
  std::set<size_t> counts;
  for (const int rows : {1000000, 1, 2, 5, 9, 14, 20, 30, 45, 60, 80, 100, 130, 160, 200, 300}) {
    Stopped library;
    Stopped plain;
    {
      ScanSqliteProbe probe(scans_.context());
      library = RunLibrary(probe, rows, [&probe] {
        probe.DeleteScanSqliteWalFile();
        probe.DeletedScanSqliteFile();
      });
    }
    {
      PlainScan scan(scans_.context());
      plain = RunPlain(scan, rows, [&scan] { scan.ScanDeleted(); });
    }
    EXPECT_EQ(library.rows, plain.rows) << rows;
    EXPECT_EQ(library.log, plain.log) << rows;
    EXPECT_EQ(library.log.empty(), library.rows.size() < static_cast<size_t>(rows)) << rows;
    rows_of_all = std::max(rows_of_all, library.rows.size());
    counts.insert(library.rows.size());
  }
  EXPECT_GT(rows_of_all, 100U);
  EXPECT_GT(counts.size(), 5U);
}

// The rows that went in until then stay in the transaction, which the deleted scan ends.
TEST_F(StopTest, KeepsTheLiveRowsUntilThen) {
  Dice dice(12);
  application_ = {{MessagesTable("first"), MessagesTable("second", 21)}, 1, {}};
  scans_.Configure(application_);
  SourceShape shape;
  shape.rows = 80;
  scans_.SetSource(MakeSource(dice, application_, shape));
  std::set<size_t> counts;
  for (const int rows : {1, 2, 9, 30, 55, 70, 90, 1000}) {
    Stopped plain;
    {
      PlainScan scan(scans_.context());
      plain = RunPlain(scan, rows, [&scan] {
        scan.ScanExist();
        scan.ScanDeleted();
      });
    }
    counts.insert(plain.rows.size());
    for (const LateIndexLimits& limits :
         {IndexAlwaysLate(), IndexNeverLate(), IndexLate(0, 5), IndexLate(7, 25)}) {
      ScanSqliteProbe probe(scans_.context());
      const Stopped library = RunLibrary(probe, rows, [&] {
        probe.late_index_limits() = limits;
        probe.ScanExist();
        probe.DeleteScanSqliteWalFile();
        probe.DeletedScanSqliteFile();
      });
      EXPECT_EQ(library.rows, plain.rows) << rows << ", index late until " << limits.rows;
      EXPECT_EQ(library.log, plain.log) << rows << ", index late until " << limits.rows;
    }
  }
  EXPECT_GT(counts.size(), 6U);
}

}  // namespace
}  // namespace differential
