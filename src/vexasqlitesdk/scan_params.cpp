#include "vexasqlitesdk/scan_params.h"

#include <json/reader.h>

#include <algorithm>
#include <array>
#include <memory>

#include "common/common/log.h"

namespace {

constexpr std::array kRequiredKeys = {"system_type",    "data_type",    "temp_folder",
                                      "source_db_path", "dest_db_path", "scan_range_type"};

int ReadScanParams(const std::string& json_text, ScanParams& params) {
  Json::Value root;
  const int parsed = ParseJsonString(json_text, root);
  if (parsed != 0) return parsed;
  const bool complete = std::none_of(kRequiredKeys.begin(), kRequiredKeys.end(),
                                     [&root](const char* key) { return root[key].empty(); });
  if (complete) {
    params.system_type = root["system_type"].asInt();
    params.data_type = root["data_type"].asInt();
    params.temp_folder = root["temp_folder"].asString();
    params.source_db_path = root["source_db_path"].asString();
    params.dest_db_path = root["dest_db_path"].asString();
    params.scan_range_type = root["scan_range_type"].asInt();
  }
  if (!root["system_version"].empty()) params.system_version = root["system_version"].asInt();
  return complete ? 0 : kParamsIncomplete;
}

}  // namespace

int ParseJsonString(const std::string& json_text, Json::Value& root) {
  Json::CharReaderBuilder builder;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  std::string errors;
  if (!reader->parse(json_text.data(), json_text.data() + json_text.size(), &root, &errors)) {
    LogEx(kLogModule, kLogError, "%s(%d): Json parse failed.", "ParseJsonString", __LINE__);
    return kJsonInvalid;
  }
  return 0;
}

// The JSON library throws at a value of the wrong type, and at a text nested too deep. Its
// exceptions stay inside: a host in C could not catch them.
int ParseScanParams(const std::string& json_text, ScanParams& params) {
  try {
    return ReadScanParams(json_text, params);
  } catch (const Json::Exception&) {
    return kParamsIncomplete;
  }
}
