#include <filesystem>
#include <system_error>

#include "common/common/path_helpers.h"
#include "scansqlite/scan_sqlite.h"

namespace fs = std::filesystem;

namespace {

void RemoveOrThrow(const fs::path& path) {
  std::error_code error;
  fs::remove(path, error);
  if (error) throw fs::filesystem_error("remove(p): invalid argument", path, error);
}

void CopyOrThrow(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
  if (error) {
    throw fs::filesystem_error("copy_file(p1, p2, options): invalid arguments", from, to, error);
  }
}

std::string MakeTempPath(const std::string& temp_folder, const std::string& source_path) {
  return JoinPath(temp_folder, FileNameOfPath(source_path));
}

}  // namespace

// The log is copied twice: SQLite may fold the copy beside the working database into it and delete
// it, while the one under a name that SQLite does not know stays as it was for the whole scan.
bool ScanSqlite::CopyDbToTemp() {
  const std::string working_db = MakeTempPath(context_->temp_folder, context_->source_db_path);
  RemoveOrThrow(working_db);
  CopyOrThrow(context_->source_db_path, working_db);
  working_db_path_ = working_db;
  const std::string live_log = working_db + "-wal";
  const std::string kept_log = working_db + "temp-wal";
  if (!PathExists(context_->wal_path)) return true;
  RemoveOrThrow(live_log);
  CopyOrThrow(context_->wal_path, live_log);
  CopyOrThrow(context_->wal_path, kept_log);
  working_wal_path_ = kept_log;
  return true;
}
