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

std::vector<std::string> MemoryDatabase::ColumnNames(const std::string& table) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(connection_.handle(), "select name from pragma_table_info(?)", -1, &raw,
                         nullptr) != SQLITE_OK) {
    return {};
  }
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);
  sqlite3_bind_text(raw, 1, table.c_str(), -1, SQLITE_TRANSIENT);
  std::vector<std::string> names;
  while (sqlite3_step(raw) == SQLITE_ROW) {
    names.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(raw, 0)));
  }
  return names;
}

}  // namespace vexaconfigc
