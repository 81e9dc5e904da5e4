#include "scan_request.h"

#include <json/json.h>

#include <fstream>
#include <limits>
#include <string>

#include "exit_code.h"

namespace vexascan {
namespace {

Json::Value ParseObject(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw UsageError("The parameter file " + path.string() + " cannot be read.");
  }
  Json::CharReaderBuilder builder;
  Json::Value root;
  std::string errors;
  if (!Json::parseFromStream(builder, file, &root, &errors)) {
    throw UsageError("The parameter file " + path.string() + " is not valid JSON: " + errors);
  }
  if (!root.isObject()) {
    throw UsageError("The parameter file " + path.string() + " does not hold a JSON object.");
  }
  return root;
}

int NumberUnder(const Json::Value& root, const char* key, int most) {
  const Json::Value& value = root[key];
  if (!value.isInt() || value.asInt() < 0 || value.asInt() > most) {
    throw UsageError(std::string("The parameter file needs a whole number from 0 to ") +
                     std::to_string(most) + " under \"" + key + "\".");
  }
  return value.asInt();
}

std::string TextUnder(const Json::Value& root, const char* key, bool may_be_empty) {
  const Json::Value& value = root[key];
  if (!value.isString() || (!may_be_empty && value.asString().empty())) {
    throw UsageError(std::string("The parameter file needs a text under \"") + key + "\".");
  }
  return value.asString();
}

}  // namespace

ScanRequest ReadParameterFile(const std::filesystem::path& path) {
  const Json::Value root = ParseObject(path);
  ScanRequest request;
  request.system_type = NumberUnder(root, "system_type", int{kSystemNames.size()} - 1);
  request.data_type = NumberUnder(root, "data_type", int{kApplicationNames.size()} - 1);
  request.temp_folder = TextUnder(root, "temp_folder", true);
  request.source = TextUnder(root, "source_db_path", false);
  request.result = TextUnder(root, "dest_db_path", false);
  request.range =
      static_cast<Range>(NumberUnder(root, "scan_range_type", int{kRangeNames.size()} - 1));
  if (!root["system_version"].isNull()) {
    request.system_version = NumberUnder(root, "system_version", std::numeric_limits<int>::max());
  }
  return request;
}

std::string ParameterText(const ScanRequest& request, Range range,
                          const std::filesystem::path& source, const std::filesystem::path& result,
                          const std::filesystem::path& temp_folder) {
  Json::Value root(Json::objectValue);
  root["system_type"] = request.system_type;
  root["data_type"] = request.data_type;
  if (request.system_version) {
    root["system_version"] = *request.system_version;
  }
  root["scan_range_type"] = static_cast<int>(range);
  root["source_db_path"] = source.string();
  root["dest_db_path"] = result.string();
  root["temp_folder"] = temp_folder.string();
  Json::StreamWriterBuilder builder;
  builder["emitUTF8"] = true;
  return Json::writeString(builder, root);
}

}  // namespace vexascan
