#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

inline constexpr int32_t kScanRuns = 0;
inline constexpr int32_t kScanPaused = 1;
inline constexpr int32_t kScanStopped = 2;

// The one word that crosses threads: a host's thread stores into it while a scan reads it. Null
// before InitSqliteSDK and after UninitSqliteSDK. A stop stays until UninitSqliteSDK.
extern std::unique_ptr<std::atomic<int32_t>> g_scan_control;

// The value behind g_scan_control; a null one reads as kScanRuns.
inline int32_t ReadScanControl() {
  return g_scan_control == nullptr ? kScanRuns : g_scan_control->load(std::memory_order_relaxed);
}

// Stores `value` if there is a word to store it into.
inline void WriteScanControl(int32_t value) {
  if (g_scan_control != nullptr) g_scan_control->store(value, std::memory_order_relaxed);
}
