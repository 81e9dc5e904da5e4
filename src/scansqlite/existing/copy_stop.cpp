#include "scansqlite/existing/copy_stop.h"

#include "common/common/log.h"
#include "common/common/scan_control.h"

bool CopyIsStopped() {
  if (ReadScanControl() != kScanStopped) return false;
  LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::GetNeedQueryTableInfo");
  return true;
}
