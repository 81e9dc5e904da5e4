#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "common/sqlitecommon/sqlite_connection.h"
#include "sqliteconfig/config_records.h"

// Owns the connection to the result database, whose layout it makes: one table for each entry of
// the result mapping, and on each a unique index that keeps duplicates out.
class Storager {
 public:
  // Opens or creates the result database at `path` (UTF-8); null, with a log line, on failure.
  static std::unique_ptr<Storager> Create(const std::string& path);

  // Fits the page cache to a source of so many bytes.
  void FitCache(uint64_t source_bytes);

  // Creates the result tables and their unique indexes. Always true: a statement that fails shows
  // later, as rows that do not arrive.
  bool CreateResultTables(const NeedQueryTables& tables);

  sqlite3* handle() const { return connection_.handle(); }

  // Runs one statement text; the result is not looked at.
  void Execute(const char* sql);

 private:
  explicit Storager(const std::string& path) : connection_(path) {}

  SqliteConnection connection_;
};
