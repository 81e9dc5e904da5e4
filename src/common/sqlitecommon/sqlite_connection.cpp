#include "common/sqlitecommon/sqlite_connection.h"

#include <utility>

#include "common/common/text_convert.h"

int SqliteConnection::Open(std::string path) {
  if (path_.empty()) path_ = std::move(path);
  if (path_.empty()) return SQLITE_OK;
  return sqlite3_open16(Utf8ToWide(path_).c_str(), &handle_);
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
