#include "whole/result_rows.h"

#include <stdexcept>
#include <vector>

#include "common/sqlitecommon/sqlite_connection.h"
#include "common/sqlitecommon/sqlite_statement.h"

namespace bench {

namespace {

void Mix(uint64_t& hash, const void* bytes, size_t size) {
  const auto* at = static_cast<const uint8_t*>(bytes);
  for (size_t i = 0; i < size; ++i) hash = (hash ^ at[i]) * 0x100000001B3U;
}

void MixColumn(uint64_t& hash, sqlite3_stmt* row, int column) {
  const int type = sqlite3_column_type(row, column);
  Mix(hash, &type, sizeof type);
  if (type == SQLITE_INTEGER) {
    const sqlite3_int64 number = sqlite3_column_int64(row, column);
    Mix(hash, &number, sizeof number);
  } else if (type == SQLITE_FLOAT) {
    const double number = sqlite3_column_double(row, column);
    Mix(hash, &number, sizeof number);
  } else if (type != SQLITE_NULL) {
    const void* bytes = sqlite3_column_blob(row, column);
    const int size = sqlite3_column_bytes(row, column);
    Mix(hash, &size, sizeof size);
    Mix(hash, bytes, static_cast<size_t>(size));
  }
}

}  // namespace

ResultRows ReadResultRows(const std::string& path) {
  SqliteConnection connection;
  if (connection.Open(path) != SQLITE_OK) throw std::runtime_error("cannot open " + path);
  SqliteStatement schema;
  schema.Prepare(connection.handle(), "SELECT name FROM sqlite_master WHERE type='table'");
  std::vector<std::string> tables;
  while (schema.Step() == SQLITE_ROW) tables.push_back(schema.ColumnText(0));
  ResultRows rows;
  for (const std::string& table : tables) {
    Mix(rows.hash, table.data(), table.size());
    SqliteStatement query;
    query.Prepare(connection.handle(), "SELECT rowid, * FROM " + table + " ORDER BY rowid");
    while (query.Step() == SQLITE_ROW) {
      ++rows.count;
      for (int i = 0; i < query.ColumnCount(); ++i) MixColumn(rows.hash, query.handle(), i);
    }
    if (query.result() != SQLITE_DONE) throw std::runtime_error("cannot read " + table);
  }
  return rows;
}

}  // namespace bench
