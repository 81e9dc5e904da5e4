#pragma once

#include <sqlite3.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <utility>

// Stands between SQLite and the files while it lives, so that a test can act at the very moment at
// which a scan opens or reads one, or refuse to open it. One at a time, and for one thread.
class SqliteHooks {
 public:
  // Called with the path of a main database before it is opened; false refuses it.
  using OpenHook = std::function<bool(const std::string& path)>;
  // Called with the path and the offset before a main database is read.
  using ReadHook = std::function<void(const std::string& path, sqlite3_int64 offset)>;

  explicit SqliteHooks(OpenHook on_open, ReadHook on_read = {})
      : on_open_(std::move(on_open)), on_read_(std::move(on_read)) {
    real_ = sqlite3_vfs_find(nullptr);
    vfs_ = *real_;
    vfs_.zName = "test-hooks";
    vfs_.xOpen = Open;
    vfs_.pNext = nullptr;
    current_ = this;
    sqlite3_vfs_register(&vfs_, 1);
  }

  ~SqliteHooks() {
    sqlite3_vfs_unregister(&vfs_);
    sqlite3_vfs_register(real_, 1);
    current_ = nullptr;
  }

  SqliteHooks(const SqliteHooks&) = delete;
  SqliteHooks& operator=(const SqliteHooks&) = delete;

 private:
  struct OpenFile {
    std::string path;
    const sqlite3_io_methods* real_methods;
    sqlite3_io_methods methods;
  };

  static int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* out_flags) {
    SqliteHooks& self = *current_;
    const bool is_main = name != nullptr && (flags & SQLITE_OPEN_MAIN_DB) != 0;
    if (is_main && !self.on_open_(name)) {
      file->pMethods = nullptr;
      return SQLITE_CANTOPEN;
    }
    const int code = self.real_->xOpen(self.real_, name, file, flags, out_flags);
    if (code != SQLITE_OK || !is_main || !self.on_read_) return code;
    OpenFile& open = self.files_[file];
    open = {name, file->pMethods, *file->pMethods};
    open.methods.xRead = Read;
    open.methods.xClose = CloseFile;
    file->pMethods = &open.methods;
    return code;
  }

  static int Read(sqlite3_file* file, void* out, int count, sqlite3_int64 offset) {
    OpenFile& open = current_->files_.at(file);
    current_->on_read_(open.path, offset);
    return open.real_methods->xRead(file, out, count, offset);
  }

  static int CloseFile(sqlite3_file* file) {
    const sqlite3_io_methods* real_methods = current_->files_.at(file).real_methods;
    file->pMethods = real_methods;
    current_->files_.erase(file);
    return real_methods->xClose(file);
  }

  inline static SqliteHooks* current_ = nullptr;
  sqlite3_vfs* real_ = nullptr;
  sqlite3_vfs vfs_{};
  OpenHook on_open_;
  ReadHook on_read_;
  std::map<sqlite3_file*, OpenFile> files_;
};

// Calls `action` when `path` is opened for the n-th time; what it returns says whether it opens.
inline SqliteHooks::OpenHook OnNthOpen(std::string path, int nth, std::function<bool()> action) {
  int seen = 0;
  return [path = std::move(path), nth, action = std::move(action),
          seen](const std::string& opened) mutable {
    return opened != path || ++seen != nth || action();
  };
}
