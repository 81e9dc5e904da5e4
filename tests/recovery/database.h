#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "recovery/value.h"

namespace recovery {

// A failure that SQLite reports, with its extended code.
class DatabaseError : public std::runtime_error {
 public:
  DatabaseError(const std::string& message, int code) : std::runtime_error(message), code_(code) {}

  int code() const { return code_; }

 private:
  int code_;
};

// One prepared statement. Parameters count from 1, columns from 0.
class Statement {
 public:
  Statement(sqlite3* handle, const std::string& sql);

  void Bind(int parameter, const Value& value);

  // Whether there is a row. Throws DatabaseError.
  bool Step();
  void Reset();

  int columns() const { return sqlite3_column_count(statement_.get()); }
  Value Column(int column) const;
  std::string ColumnName(int column) const { return sqlite3_column_name(statement_.get(), column); }

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  sqlite3* handle_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

// One connection. Every failure throws DatabaseError.
class Database {
 public:
  explicit Database(const std::string& path);

  void Run(const std::string& sql);
  Statement Prepare(const std::string& sql) { return {handle_.get(), sql}; }
  std::vector<Row> Rows(const std::string& sql);
  Value One(const std::string& sql);
  int64_t Number(const std::string& sql);

  // Rows that the last statement changed, and the row id of the last insert.
  int64_t Changes() const { return sqlite3_changes64(handle_.get()); }
  int64_t LastRowId() const { return sqlite3_last_insert_rowid(handle_.get()); }

  // The file's bytes as they would be written.
  std::string Serialized();

 private:
  struct Close {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  std::unique_ptr<sqlite3, Close> handle_;
};

// A name or a text in SQL.
std::string Quoted(const std::string& name);
std::string SqlText(const std::string& text);

}  // namespace recovery
