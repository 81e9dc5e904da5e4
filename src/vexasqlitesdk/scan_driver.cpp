#include "vexasqlitesdk/scan_driver.h"

#include "common/common/log.h"
#include "common/common/scan_control.h"
#include "common/common/source_path.h"
#include "scansqlite/scan_sqlite.h"
#include "vexasqlitesdk/scan_params.h"

std::string g_work_folder;

namespace {

constexpr int kScanInitFailed = 1003;

constexpr uint32_t kMaxSystemType = 2;
constexpr uint32_t kMaxDataType = 12;
constexpr uint32_t kMaxScanRangeType = 3;

enum ScanRange : int32_t { kRangeAll = 0, kRangeExisting = 1, kRangeDeleted = 2 };

// Compared unsigned, so that a negative number counts as too large. The bounds are one wider than
// the named systems and applications: such a scan finds no configuration and an empty result.
bool IsInRange(const ScanParams& params) {
  return static_cast<uint32_t>(params.system_type) <= kMaxSystemType &&
         static_cast<uint32_t>(params.data_type) <= kMaxDataType &&
         static_cast<uint32_t>(params.scan_range_type) <= kMaxScanRangeType;
}

ScanContext MakeScanContext(const ScanParams& params) {
  ScanContext context;
  context.work_folder = g_work_folder;
  context.system_version = params.system_version;
  context.data_type = params.data_type;
  context.system_type = params.system_type;
  context.dest_db_path = params.dest_db_path;
  context.source_db_path = params.source_db_path;
  context.temp_folder = params.temp_folder;
  context.wal_path = params.source_db_path + "-wal";
  return context;
}

int Dispatch(ScanSqlite& scan, int32_t scan_range_type) {
  switch (scan_range_type) {
    case kRangeAll:
      return scan.Scan();
    case kRangeExisting:
      return scan.ScanExist();
    case kRangeDeleted:
      return scan.ScanDeleted();
    default:
      return kScanSucceeded;
  }
}

}  // namespace

int RunScan(const char* json, int json_length, void* caller_context) {
  if (json == nullptr || json_length < 1 || caller_context == nullptr) {
    LogEx(kLogModule, kLogError, "[%s] invalid param.", kSourceVexaSqliteSdk);
    return kParamsIncomplete;
  }
  ScanParams params;
  const std::string json_text(json, static_cast<size_t>(json_length));
  const int parsed = ParseScanParams(json_text, params);
  if (parsed != 0) {
    LogEx(kLogModule, kLogError,
          "[%s], at line %d fail to parse param json or param incomplete, return %d.",
          kSourceVexaSqliteSdk, __LINE__, parsed);
    return parsed;
  }
  if (!IsInRange(params)) {
    LogEx(kLogModule, kLogError, "[%s], at line %d scan param content invalid",
          kSourceVexaSqliteSdk, __LINE__);
    return kParamsIncomplete;
  }
  const ScanContext context = MakeScanContext(params);
  auto scan = std::make_unique<ScanSqlite>(&context, g_scan_control.get(), caller_context);
  if (scan->Init() != kScanSucceeded) {
    scan.reset();
    LogEx(kLogModule, kLogError, "[%s], at line %d init ScanSqlite fail", kSourceVexaSqliteSdk,
          __LINE__);
    return kScanInitFailed;
  }
  return Dispatch(*scan, params.scan_range_type);
}
