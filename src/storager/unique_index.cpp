#include "storager/unique_index.h"

#include "common/sqlitecommon/sqlite_statement.h"

namespace {

void Execute(sqlite3* connection, const std::string& sql) {
  sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr);
}

}  // namespace

UniqueIndex::UniqueIndex(sqlite3* connection, const std::string& table_name)
    : connection_(connection), table_name_(table_name) {}

std::string UniqueIndex::NameFor(const std::string& table_name) {
  return table_name + "_unique_key_index";
}

UniqueIndex::Entry UniqueIndex::Find() const {
  SqliteStatement query;
  query.Prepare(
      connection_,
      "select rowid, sql from sqlite_master where type='index' and name=? and tbl_name=?");
  query.BindText(1, NameFor(table_name_));
  query.BindText(2, table_name_);
  if (query.Step() != SQLITE_ROW) return {};
  return {query.ColumnInt64(0), query.ColumnText(1)};
}

bool UniqueIndex::Exists() const { return !Find().sql.empty(); }

bool UniqueIndex::Drop() {
  const Entry entry = Find();
  if (entry.sql.empty() || sqlite3_get_autocommit(connection_) != 0) return false;
  Execute(connection_, "DROP INDEX " + NameFor(table_name_));
  if (Exists()) return false;
  dropped_ = entry;
  return true;
}

bool UniqueIndex::Restore() {
  Execute(connection_, dropped_.sql);
  if (!Exists()) return false;
  MoveTo(dropped_.row_id);
  return true;
}

// Tables and indexes are listed in the order in which they were made, and a scan with other rows
// must not change it. Where SQLite forbids the change, the index is listed last.
void UniqueIndex::MoveTo(int64_t row_id) {
  Execute(connection_, "PRAGMA writable_schema=ON");
  SqliteStatement update;
  update.Prepare(connection_, "update sqlite_master set rowid=? where type='index' and name=?");
  update.BindInt64(1, row_id);
  update.BindText(2, NameFor(table_name_));
  update.Step();
  Execute(connection_, "PRAGMA writable_schema=OFF");
}
