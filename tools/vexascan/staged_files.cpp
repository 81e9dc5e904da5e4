#include "staged_files.h"

#include <algorithm>
#include <string_view>

#include "evidence_files.h"
#include "exit_code.h"
#include "request_checks.h"
#include "sqlite_db.h"

namespace vexascan {
namespace fs = std::filesystem;
namespace {

// The source's own name, so that the log speaks of a file that the user knows, unless it holds
// bytes that need not be UTF-8, which all paths of the library are.
std::string WorkingName(const fs::path& source) {
  const std::string name = source.filename().string();
  const bool plain =
      std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
  return plain && !name.empty() ? name : "source.db";
}

}  // namespace

StagedFiles::StagedFiles(const ScanRequest& request) : folder_(request.temp_folder) {
  fs::create_directory(folder_.path() / "source");
  source_ = folder_.path() / "source" / WorkingName(request.source);
  CopyBytes(request.source, source_);
  const fs::path log = LogOfSource(request.source);
  if (!log.empty()) {
    CopyBytes(log, WithSuffix(source_, "-wal"));
  }

  fs::create_directory(config_folder());
  const fs::path config = request.config_folder / kConfigName;
  CopyBytes(config, config_folder() / kConfigName);
  const fs::path config_log = WithSuffix(config, "-wal");
  if (fs::exists(config_log)) {
    CopyBytes(config_log, config_folder() / (std::string(kConfigName) + "-wal"));
  }
}

fs::path StagedFiles::NewTempFolder(const std::string& run) const {
  fs::path folder = folder_.path() / (run + "-work");
  fs::create_directory(folder);
  return folder;
}

fs::path StagedFiles::ResultPath(const std::string& run) const {
  return folder_.path() / (run + ".db");
}

void StagedFiles::CheckApplicationIsKnown(const ScanRequest& request) const {
  const std::string system(kSystemNames.at(static_cast<std::size_t>(request.system_type)));
  const std::string data(kApplicationNames.at(static_cast<std::size_t>(request.data_type)));
  bool known = false;
  try {
    const Database config(config_folder() / kConfigName);
    Statement count = config.Prepare(
        "select count(*) from scan_table_info where system_type = ?1 and data_type = ?2");
    count.Bind(1, system);
    count.Bind(2, data);
    known = count.Step() && count.Integer(0) > 0;
  } catch (const DatabaseError& error) {
    throw UsageError("The " + std::string(kConfigName) + " in " + request.config_folder.string() +
                     " is not a configuration database (" + error.what() + ").");
  }
  if (!known) {
    throw UsageError("The configuration in " + request.config_folder.string() +
                     " does not cover the application " + data + " of " + system + ".");
  }
}

}  // namespace vexascan
