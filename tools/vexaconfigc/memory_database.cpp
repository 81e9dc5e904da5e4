#include "memory_database.h"

#include <memory>

namespace vexaconfigc {

MemoryDatabase::MemoryDatabase() { static_cast<void>(connection_.Open(":memory:")); }

std::string MemoryDatabase::Run(const std::string& sql) {
  if (sqlite3_exec(connection_.handle(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) {
    return "";
  }
  return sqlite3_errmsg(connection_.handle());
}

std::vector<std::string> MemoryDatabase::Ask(const char* sql, const std::string& table) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(connection_.handle(), sql, -1, &raw, nullptr) != SQLITE_OK) return {};
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);
  sqlite3_bind_text(raw, 1, table.c_str(), -1, SQLITE_TRANSIENT);
  std::vector<std::string> answers;
  while (sqlite3_step(raw) == SQLITE_ROW) {
    answers.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(raw, 0)));
  }
  return answers;
}

std::vector<std::string> MemoryDatabase::ColumnNames(const std::string& table) {
  return Ask("select name from pragma_table_info(?)", table);
}

bool MemoryDatabase::HasRowIds(const std::string& table) {
  return Ask("select name from pragma_table_list(?) where wr", table).empty();
}

// A primary key that is the row id needs no index of its own; any other one has it.
std::string MemoryDatabase::RowIdAlias(const std::string& table) {
  const std::vector<std::string> key =
      Ask("select name from pragma_table_info(?) where pk > 0", table);
  const bool indexed =
      !Ask("select name from pragma_index_list(?) where origin = 'pk'", table).empty();
  return key.size() == 1 && !indexed && HasRowIds(table) ? key.front() : "";
}

}  // namespace vexaconfigc
