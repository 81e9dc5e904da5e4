#include "common/common/scan_control.h"

std::unique_ptr<std::atomic<int32_t>> g_scan_control;
