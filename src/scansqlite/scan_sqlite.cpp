#include "scansqlite/scan_sqlite.h"

#include "common/common/log.h"
#include "storager/unique_index.h"

namespace {

// Beside the page cache of the result this is the most that a scan holds.
constexpr size_t kMaxKeyBytes = size_t{40} << 20;

}  // namespace

ScanSqlite::ScanSqlite(const ScanContext* context, std::atomic<int32_t>* scan_control,
                       void* caller_context)
    : context_(context),
      scan_control_(scan_control),
      caller_context_(caller_context),
      saved_keys_(kMaxKeyBytes) {}

SavedKeys* ScanSqlite::KeysOf(const std::string& table_name) {
  return UniqueIndex(storager_->handle(), table_name).Exists() ? &saved_keys_ : nullptr;
}

// The result database goes first: closing it is what rolls back an open transaction.
ScanSqlite::~ScanSqlite() { storager_.reset(); }

int ScanSqlite::Scan() {
  LogEx(kLogModule, kLogInfo, "Enter %s", "ScanSqlite::Scan");
  const int result = ScanExist();
  LogEx(kLogModule, kLogInfo, "End %s", "ScanSqlite::Scan");
  return result == kScanSucceeded ? ScanDeleted() : result;
}

// Both lines come before the work: hosts read the pair as "this scan was reached".
int ScanSqlite::ScanExist() {
  LogEx(kLogModule, kLogInfo, "Enter %s", "ScanSqlite::ScanExist");
  LogEx(kLogModule, kLogInfo, "End %s", "ScanSqlite::ScanExist");
  return QueryAndSave(need_query_tables_);
}

int ScanSqlite::ScanDeleted() {
  LogEx(kLogModule, kLogInfo, "Enter %s", "ScanSqlite::ScanDeleted");
  LogEx(kLogModule, kLogInfo, "End %s", "ScanSqlite::ScanDeleted");
  const int result = DeleteScanSqliteWalFile();
  return is_scan_database_ ? DeletedScanSqliteFile() : result;
}
