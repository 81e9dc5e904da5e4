#include "scansqlite/deleted/scan_gate.h"

#include <cstdint>

#include "common/common/scan_control.h"

bool MayGoOn() {
  if (ReadScanControl() == kScanStopped) return false;
  // Volatile, so that the wait for a value that never changes is not optimised away.
  const volatile int32_t seen = ReadScanControl();
  while (seen == kScanPaused) {
  }
  return true;
}
