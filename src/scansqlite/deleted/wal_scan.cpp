#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/source_path.h"
#include "scansqlite/deleted/log_source.h"
#include "scansqlite/deleted/pass_runner.h"
#include "scansqlite/scan_sqlite.h"

namespace {

constexpr int32_t kSystemAndroid = 0;
constexpr int32_t kDataWechat = 9;

// The application on Android keeps the last bytes of each page for itself.
constexpr uint32_t kWechatReservedBytes = 16;

uint32_t KeptOutBytes(const ScanContext& context) {
  const bool keeps = context.system_type == kSystemAndroid && context.data_type == kDataWechat;
  return keeps ? kWechatReservedBytes : 0;
}

}  // namespace

int32_t ScanSqlite::DeleteScanSqliteWalFile() {
  FileDataBuf file(context_->source_db_path);
  if (file.status() != 0) {
    LogEx(kLogModule, kLogError, "create file data buf fail File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, "ScanSqlite::DeleteScanSqliteWalFile", __LINE__);
    return kScanFileBufferFailed;
  }
  LogFile log;
  if (!log.Open(working_wal_path_)) {
    LogEx(kLogModule, kLogError, "Load file error! File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, "ScanSqlite::DeleteScanSqliteWalFile", __LINE__);
    return kScanFileBufferFailed;
  }
  LogEx(kLogModule, kLogInfo, "%s ScanSqliteWal Init Succeed", context_->source_db_path.c_str());
  if (log.size() <= kWalHeaderBytes) return kScanFileBufferFailed;
  LogSource source({&db_header_, LogFileBytes(log, kWalHeaderBytes), &wal_page_map_, &file,
                    KeptOutBytes(*context_)});
  PassRunner<LogSource> runner(source, "ScanSqlite::SqliteFileWALWithOverflowScan");
  std::vector<TablePasses> tables = MakeTablePasses();
  std::vector<DeletedPass*> sharing;
  for (const TablePasses& table : tables) {
    for (const auto& pass : table.passes) sharing.push_back(pass.get());
  }
  size_t next_sharing = 0;
  for (TablePasses& table : tables) {
    SaveCarvedRows(table, [&](DeletedPass&, RowBatch& rows) {
      runner.RunShared(LogCursor(source), sharing, next_sharing++, rows);
    });
  }
  return kScanSucceeded;
}
