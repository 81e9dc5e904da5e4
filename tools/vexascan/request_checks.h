// Everything that is looked at before a scan may touch the disk. The library removes whatever
// stands at its result path and overwrites names in its working folder; these checks keep both
// away from evidence, whichever way a path is spelled.
#pragma once

#include <filesystem>

#include "scan_request.h"

namespace vexascan {

constexpr const char* kConfigName = "VexaConfiger.db";
constexpr const char* kLogName = "vexa_sqlite_sdk.log";

// The folder of the shipped configuration: where this program lies, or ../share/vexasqlitesdk
// from there once installed. Throws UsageError when neither holds one.
std::filesystem::path ShippedConfigFolder();

// The source's write-ahead log, or the empty path when there is none. For a source named through a
// link the log may lie beside the link or beside the file itself.
std::filesystem::path LogOfSource(const std::filesystem::path& source);

// Fills the empty folders of the request and refuses, by UsageError and without touching anything,
// what must not or cannot be done.
void CompleteAndCheck(ScanRequest& request);

}  // namespace vexascan
