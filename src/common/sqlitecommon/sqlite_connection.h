#pragma once

#include <sqlite3.h>

#include <string>

// Owns one SQLite connection. The destructor closes a connection that is still open.
class SqliteConnection {
 public:
  SqliteConnection() = default;
  explicit SqliteConnection(std::string path) : path_(std::move(path)) {}
  ~SqliteConnection() { Close(); }
  SqliteConnection(const SqliteConnection&) = delete;
  SqliteConnection& operator=(const SqliteConnection&) = delete;

  // Opens the stored path, or adopts `path` (UTF-8) when none is stored; with no path at all
  // nothing is opened and the result is 0. A missing file is created. Returns SQLite's code.
  int Open(std::string path);

  // Closes the connection, finalizing statements that are still open. 0, or the code of a second
  // close that failed, in which case the connection is kept.
  int Close();

  sqlite3* handle() const { return handle_; }
  const std::string& path() const { return path_; }

 private:
  sqlite3* handle_ = nullptr;
  std::string path_;
};
