#pragma once

#include "vexalogsdk/vexa_log_sdk.h"

// Every line of the library carries this module name.
inline constexpr const char* kLogModule = "VexaSqliteSDK";

inline constexpr int kLogInfo = 1;
inline constexpr int kLogWarning = 2;  // a remark about input that is read all the same
inline constexpr int kLogError = 3;
