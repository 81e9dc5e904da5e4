#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

// One prepared statement with the last code that an operation on it gave. Reads through a
// statement that could not be prepared give the neutral value.
class SqliteStatement {
 public:
  SqliteStatement() = default;
  ~SqliteStatement() { Finalize(); }
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  int Prepare(sqlite3* connection, std::string sql);
  int Step();
  int Reset();
  void Finalize();

  int32_t result() const { return result_; }
  sqlite3_stmt* handle() const { return statement_; }
  const std::string& sql() const { return sql_; }

  int ColumnCount() const;
  int ColumnType(int index) const;
  std::string ColumnName(int index) const;
  int ColumnInt(int index) const;
  int64_t ColumnInt64(int index) const;
  double ColumnDouble(int index) const;
  // The text up to its first zero byte; a NULL is the empty text.
  std::string ColumnText(int index) const;
  std::vector<uint8_t> ColumnBlob(int index) const;

  // Parameters count from 1. The codes are stored and returned; with no statement the code is 0.
  int BindInt64(int index, int64_t value);
  int BindDouble(int index, double value);
  int BindText(int index, const std::string& value);
  int BindBlob(int index, const std::vector<uint8_t>& value);
  int BindNull(int index);

 private:
  int32_t result_ = 0;
  sqlite3_stmt* statement_ = nullptr;
  std::string sql_;
};
