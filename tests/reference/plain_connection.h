#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

namespace plain_walk {

// A connection as SQLite gives it to whoever asks for nothing else: with its locks, its page cache
// and its page size. The library sets all three.
class PlainConnection {
 public:
  // Opens or creates the database at `path` (UTF-8). Gives SQLite's code.
  int Open(const std::string& path);

  // Runs statements whose failure shows later.
  void Execute(const char* sql);

  bool is_open() const { return handle_ != nullptr; }
  sqlite3* handle() const { return handle_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace plain_walk
