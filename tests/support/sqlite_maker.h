#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Rows of a query, each value as text: integers and reals as SQLite prints them, a blob as x'..'
// with capital digits, a NULL as NULL.
using TextRows = std::vector<std::vector<std::string>>;

// One database that a test makes or looks into. Every failure throws std::runtime_error.
class SqliteMaker {
 public:
  // Opens or creates the file. Deleted bytes are kept: some systems' SQLite wipes them by default.
  explicit SqliteMaker(const std::string& path);

  // Runs any number of statements.
  void Run(const std::string& sql);

  TextRows Rows(const std::string& sql);

  // The first value of the first row.
  std::string Text(const std::string& sql);
  int64_t Number(const std::string& sql);

  // Leaves the write-ahead log beside the database when the connection closes.
  void KeepLogOnClose();

  // Writes into a log that is never folded into the file by itself.
  void StartLog();

 private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  std::unique_ptr<sqlite3, Close> handle_;
};

// The text as an SQL literal.
std::string SqlText(const std::string& text);
