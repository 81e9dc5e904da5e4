#include "differential/option_scan.h"

#include <optional>

#include "common/common/file_loader.h"
#include "scansqlite/deleted/log_source.h"
#include "scansqlite/deleted/main_file_cursor.h"
#include "scansqlite/deleted/page_list.h"
#include "scansqlite/deleted/pass_runner.h"

namespace differential {

namespace {

constexpr const char* kStopName = "OptionScan";

}  // namespace

LateIndexLimits IndexAlwaysLate() { return IndexLate(0, SIZE_MAX); }

LateIndexLimits IndexNeverLate() { return IndexLate(SIZE_MAX, SIZE_MAX); }

LateIndexLimits IndexLate(size_t from, size_t to) { return {from, to, SIZE_MAX}; }

int OptionScan::Init() {
  const int code = probe_.Init();
  if (!options_.keep_keys) probe_.saved_keys().GiveUp();
  probe_.late_index_limits() = options_.late_index;
  return code;
}

int OptionScan::Scan() {
  const int code = ScanExist();
  return code == kScanSucceeded ? ScanDeleted() : code;
}

int OptionScan::ScanDeleted() {
  const int32_t code = ScanLog();
  return probe_.is_scan_database() ? ScanMainFile() : code;
}

int32_t OptionScan::ScanLog() {
  FileDataBuf file(probe_.context().source_db_path);
  LogFile log;
  if (file.status() != 0 || !log.Open(probe_.working_wal_path()) || log.size() <= kWalHeaderBytes) {
    return kScanFileBufferFailed;
  }
  LogSource source(
      {&probe_.header(), LogFileBytes(log, kWalHeaderBytes), &probe_.wal_page_map(), &file, 0});
  PassRunner<LogSource> runner(source, kStopName, options_.level);
  std::vector<TablePasses> tables = probe_.MakeTablePasses();
  std::vector<DeletedPass*> all;
  for (const TablePasses& table : tables) {
    for (const auto& pass : table.passes) all.push_back(pass.get());
  }
  size_t next = 0;
  for (TablePasses& table : tables) {
    probe_.SaveCarvedRows(table, [&](DeletedPass& pass, RowBatch& rows) {
      if (options_.share_sweeps) {
        runner.RunShared(LogCursor(source), all, next++, rows);
      } else {
        runner.RunAlone(LogCursor(source), pass, rows);
      }
    });
  }
  return kScanSucceeded;
}

int32_t OptionScan::ScanMainFile() {
  FileDataBuf file(probe_.context().source_db_path);
  if (file.status() != 0) return kScanFileBufferFailed;
  MainFileSource source(probe_.header(), file);
  PassRunner<MainFileSource> runner(source, kStopName, options_.level);
  std::vector<TablePasses> tables = probe_.MakeTablePasses();
  std::vector<DeletedPass*> sharing;
  for (const TablePasses& table : tables) {
    if (table.table->is_small_table) continue;
    for (const auto& pass : table.passes) sharing.push_back(pass.get());
  }
  size_t next = 0;
  for (TablePasses& table : tables) {
    std::optional<PageList> page_list;
    if (table.table->is_small_table) {
      page_list.emplace(probe_.header().page_count);
      if (!probe_.FillPageList(file, *table.table, *page_list)) continue;
    }
    probe_.SaveCarvedRows(table, [&](DeletedPass& pass, RowBatch& rows) {
      if (page_list) {
        runner.RunAlone(MainFileCursor(source, &*page_list), pass, rows);
      } else if (options_.share_sweeps) {
        runner.RunShared(MainFileCursor(source), sharing, next++, rows);
      } else {
        runner.RunAlone(MainFileCursor(source), pass, rows);
      }
    });
  }
  return kScanSucceeded;
}

}  // namespace differential
