#pragma once

#include <json/value.h>

#include <cstdint>
#include <limits>
#include <string>

// The parsed JSON parameters of one scan.
struct ScanParams {
  int32_t system_type = 0;
  int32_t data_type = 0;
  // Without the key every known layout is tried.
  int32_t system_version = std::numeric_limits<int32_t>::max();
  int32_t scan_range_type = 0;
  std::string temp_folder;
  std::string source_db_path;
  std::string dest_db_path;
};

inline constexpr int kJsonInvalid = 5;
inline constexpr int kParamsIncomplete = 1000;

// Parses the text into `root`. 0, or kJsonInvalid after a log line.
int ParseJsonString(const std::string& json_text, Json::Value& root);

// Fills `params` from the text: 0, kJsonInvalid, or kParamsIncomplete when a required key is
// absent, null, an empty array or an empty object, or when a value cannot be converted.
int ParseScanParams(const std::string& json_text, ScanParams& params);
