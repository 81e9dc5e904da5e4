#include <vexasqlitesdk.h>

#include "common/common/log.h"
#include "common/common/path_helpers.h"
#include "common/common/scan_control.h"
#include "vexasqlitesdk/scan_driver.h"

namespace {

constexpr int kNullArgument = 1;

void LogEnter(const char* name) { LogEx(kLogModule, kLogInfo, "Enter %s", name); }

void LogEnd(const char* name) { LogEx(kLogModule, kLogInfo, "End %s", name); }

}  // namespace

int InitSqliteSDK(const char* log_folder, const char* work_folder) {
  if (log_folder == nullptr || work_folder == nullptr) return kNullArgument;
  const std::string log_path = JoinPath(log_folder, "vexa_sqlite_sdk.log");
  InitLogEx(work_folder, kLogModule, log_path.c_str());
  LogEx(kLogModule, kLogInfo, "VexaSqliteSDK version: %s", kVersionText);
  g_work_folder = work_folder;
  if (g_scan_control == nullptr) {
    g_scan_control = std::make_unique<std::atomic<int32_t>>(kScanRuns);
  }
  return 0;
}

int Scan(const char* json, int json_length, void* caller_context) {
  LogEnter("Scan");
  const int result = RunScan(json, json_length, caller_context);
  LogEnd("Scan");
  return result;
}

void Stop(void) {
  LogEnter("Stop");
  WriteScanControl(kScanStopped);
  LogEnd("Stop");
}

void Pause(void) {
  LogEnter("Pause");
  WriteScanControl(kScanPaused);
  LogEnd("Pause");
}

int UninitSqliteSDK(void) {
  LogEnter("UninitSqliteSDK");
  g_scan_control.reset();
  LogEnd("UninitSqliteSDK");
  return UninitLog();
}
