#include "common/sqlitecommon/sqlite_connection.h"

#include <utility>

#include "common/common/text_convert.h"

int SqliteConnection::Open(std::string path) {
  if (path_.empty()) path_ = std::move(path);
  if (path_.empty()) return SQLITE_OK;
  // One thread uses a connection, and SQLite's own locks would cost a tenth of a scan. The way over
  // UTF-16 refuses or repairs a path as the system's own functions do.
  const std::string checked = WideToUtf8(Utf8ToWide(path_));
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  return sqlite3_open_v2(checked.c_str(), &handle_, kFlags, nullptr);
}

int SqliteConnection::Close() {
  if (handle_ == nullptr) return SQLITE_OK;
  if (sqlite3_close(handle_) == SQLITE_BUSY) {
    while (sqlite3_stmt* open = sqlite3_next_stmt(handle_, nullptr)) sqlite3_finalize(open);
    const int code = sqlite3_close(handle_);
    if (code != SQLITE_OK) return code;
  }
  handle_ = nullptr;
  return SQLITE_OK;
}
