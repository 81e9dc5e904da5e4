#include "request_checks.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "evidence_files.h"
#include "exit_code.h"
#include "sqlite_db.h"

namespace vexascan {
namespace fs = std::filesystem;
namespace {

// A file that must survive every scan as it is, with its name in a sentence.
struct Guarded {
  fs::path path;
  std::string name;
};

fs::path FolderOf(const fs::path& file) { return fs::absolute(file).parent_path(); }

// Existence that takes an unreadable folder for "no" and a dangling link for "yes".
bool IsThere(const fs::path& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type() != fs::file_type::not_found &&
         fs::symlink_status(path, ignored).type() != fs::file_type::none;
}

bool IsFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

bool IsFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool HoldsBytes(const fs::path& path) {
  std::error_code failed;
  const auto size = fs::file_size(path, failed);
  return !failed && size > 0;
}

void AddWithSideFiles(std::vector<Guarded>& list, const fs::path& database,
                      const std::string& name) {
  list.push_back({database, name});
  for (const fs::path& side : SideFiles(database)) {
    list.push_back(
        {side, "a file that belongs to " + name + " (" + side.filename().string() + ")"});
  }
}

std::vector<Guarded> GuardedFiles(const ScanRequest& request) {
  std::vector<Guarded> list;
  AddWithSideFiles(list, request.source, "the source");
  std::error_code failed;
  const fs::path real = fs::canonical(request.source, failed);
  if (!failed) {
    AddWithSideFiles(list, real, "the source");
  }
  AddWithSideFiles(list, request.config_folder / kConfigName, "the configuration database");
  return list;
}

void RefuseGuarded(const std::vector<Guarded>& guarded, const fs::path& path,
                   const std::string& what) {
  for (const Guarded& file : guarded) {
    if (SamePlace(path, file.path)) {
      throw UsageError(what + " " + path.string() + " is " + file.name +
                       "; it would be lost. Choose another path.");
    }
  }
}

void CheckSource(const fs::path& source) {
  if (!IsThere(source)) {
    throw UsageError("The source " + source.string() + " does not exist.");
  }
  if (!IsFile(source)) {
    throw UsageError("The source " + source.string() + " is not a file.");
  }
  if (::access(source.c_str(), R_OK) != 0) {
    throw UsageError("The source " + source.string() + " cannot be read.");
  }
  const fs::path log = LogOfSource(source);
  if (!log.empty() && (!IsFile(log) || ::access(log.c_str(), R_OK) != 0)) {
    throw UsageError("The source's write-ahead log " + log.string() +
                     " is not a file that can be read.");
  }
}

void CheckConfig(const fs::path& folder) {
  if (!IsFile(folder / kConfigName)) {
    throw UsageError("The configuration folder " + folder.string() + " holds no " + kConfigName +
                     ".");
  }
}

bool StartsLikeSqlite(const fs::path& path) {
  constexpr std::string_view kMagic{"SQLite format 3\0", 16};
  std::array<char, kMagic.size()> head{};
  std::ifstream file(path, std::ios::binary);
  file.read(head.data(), head.size());
  return file && std::string_view(head.data(), head.size()) == kMagic;
}

// A scan leaves no table without its unique index. A database with tables and no such index was
// made by something else and may be anybody's evidence.
bool LooksLikeResult(const fs::path& path) {
  try {
    const Database database = Database::OpenImmutable(path);
    const auto count = [&database](const std::string& where) {
      return database.SingleInteger("select count(*) from sqlite_master where " + where);
    };
    return count("type = 'table'") == 0 ||
           count("type = 'index' and name like '%\\_unique\\_key\\_index' escape '\\'") > 0;
  } catch (const DatabaseError&) {
    return false;
  }
}

void CheckOldResult(const fs::path& result) {
  for (const fs::path& side : SideFiles(result)) {
    const bool shared_memory = side.string().ends_with("-shm");
    if (IsThere(side) &&
        (!IsFile(side) || !IsThere(result) || (HoldsBytes(side) && !shared_memory))) {
      throw UsageError("Beside the result path stands " + side.string() +
                       ", which would be lost or mixed into the result. Choose another path.");
    }
  }
  if (!IsThere(result)) {
    return;
  }
  if (!IsFile(result)) {
    throw UsageError("The result path " + result.string() + " exists and is not a file.");
  }
  if (HoldsBytes(result) && !(StartsLikeSqlite(result) && LooksLikeResult(result))) {
    throw UsageError("The result path " + result.string() +
                     " exists and is not the result of an earlier scan; it is left alone.");
  }
}

void CheckResult(const ScanRequest& request, const std::vector<Guarded>& guarded) {
  const fs::path& result = request.result;
  if (!result.has_filename() || IsFolder(result)) {
    throw UsageError("The result path " + result.string() + " is a folder; name a file.");
  }
  RefuseGuarded(guarded, result, "The result path");
  for (const fs::path& side : SideFiles(result)) {
    RefuseGuarded(guarded, side, "The result would need a side file, and");
  }
  const fs::path folder = FolderOf(result);
  if (!IsFolder(folder)) {
    throw UsageError("The folder of the result, " + folder.string() + ", does not exist.");
  }
  if (::access(folder.c_str(), W_OK | X_OK) != 0) {
    throw UsageError("The folder of the result, " + folder.string() + ", cannot be written to.");
  }
  CheckOldResult(result);
}

void CheckLog(const ScanRequest& request, const std::vector<Guarded>& guarded) {
  const fs::path& folder = request.log_folder;
  if (!IsFolder(folder)) {
    throw UsageError("The log folder " + folder.string() + " does not exist.");
  }
  const fs::path log = folder / kLogName;
  RefuseGuarded(guarded, log, "The log file");
  if (IsThere(log) && !IsFile(log)) {
    throw UsageError("The log file " + log.string() + " exists and is not a file.");
  }
  std::vector<fs::path> outputs = SideFiles(request.result);
  outputs.push_back(request.result);
  for (const fs::path& output : outputs) {
    if (SamePlace(log, output)) {
      throw UsageError("The result and the log file would both be " + log.string() + ".");
    }
  }
}

bool HoldsSource(const fs::path& folder, const fs::path& source) {
  std::error_code failed;
  const fs::path real = fs::canonical(source, failed);
  return SamePlace(folder, FolderOf(source)) || (!failed && SamePlace(folder, FolderOf(real)));
}

void CheckTemp(const ScanRequest& request) {
  const fs::path& folder = request.temp_folder;
  if (!IsFolder(folder)) {
    throw UsageError("The folder for working copies, " + folder.string() + ", does not exist.");
  }
  if (HoldsSource(folder, request.source)) {
    throw UsageError("The folder for working copies, " + folder.string() +
                     ", is the source's own. Choose another with --temp.");
  }
  if (::access(folder.c_str(), W_OK | X_OK) != 0) {
    throw UsageError("The folder for working copies, " + folder.string() +
                     ", cannot be written to. Choose another with --temp.");
  }
}

// The first of the system's folders that does not hold the evidence itself.
fs::path SystemTempFolder(const fs::path& source) {
  const char* chosen = std::getenv("TMPDIR");
  fs::path first = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
  for (const fs::path& folder : {first, fs::path("/tmp"), fs::path("/var/tmp")}) {
    if (IsFolder(folder) && !HoldsSource(folder, source)) {
      return folder;
    }
  }
  return first;
}

}  // namespace

fs::path ShippedConfigFolder() {
  std::error_code failed;
  const fs::path program = fs::read_symlink("/proc/self/exe", failed).parent_path();
  for (const fs::path& folder : {program, program / ".." / "share" / "vexasqlitesdk"}) {
    if (IsFile(folder / kConfigName)) {
      return folder.lexically_normal();
    }
  }
  throw UsageError(std::string("No ") + kConfigName + " lies beside this program. Name its " +
                   "folder with --config.");
}

fs::path LogOfSource(const fs::path& source) {
  fs::path log = WithSuffix(source, "-wal");
  if (IsThere(log)) {
    return log;
  }
  std::error_code failed;
  const fs::path real = fs::canonical(source, failed);
  log = WithSuffix(real, "-wal");
  return !failed && IsThere(log) ? log : fs::path();
}

void CompleteAndCheck(ScanRequest& request) {
  CheckSource(request.source);
  if (request.config_folder.empty()) {
    request.config_folder = ShippedConfigFolder();
  }
  CheckConfig(request.config_folder);
  const std::vector<Guarded> guarded = GuardedFiles(request);
  CheckResult(request, guarded);
  if (request.log_folder.empty()) {
    request.log_folder = FolderOf(request.result);
  }
  CheckLog(request, guarded);
  if (request.temp_folder.empty()) {
    request.temp_folder = SystemTempFolder(request.source);
  }
  CheckTemp(request);
}

}  // namespace vexascan
