#include "storager/storager.h"

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/sqlite_statement.h"
#include "storager/column_lists.h"

namespace {

constexpr char kUniqueIndexSuffix[] = "_unique_key_index";

}  // namespace

std::unique_ptr<Storager> Storager::Create(const std::string& path) {
  std::unique_ptr<Storager> storager(new Storager(path));
  const int code = storager->connection_.Open("");
  if (code != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, open database fail, error code : %d, %s.",
          kSourceStorager, __LINE__, code, path.c_str());
    return nullptr;
  }
  storager->Execute("PRAGMA encoding = \"UTF-8\"");
  // Rows arrive in the order of the source, and their keys fall all over the unique index.
  storager->Execute("PRAGMA cache_size=-32768");
  return storager;
}

bool Storager::HasUniqueIndex(const std::string& table_name) const {
  SqliteStatement query;
  query.Prepare(connection_.handle(),
                "select count(*) from sqlite_master where type='index' and name=? and tbl_name=?");
  query.BindText(1, table_name + kUniqueIndexSuffix);
  query.BindText(2, table_name);
  return query.Step() == SQLITE_ROW && query.ColumnInt(0) == 1;
}

void Storager::Execute(const char* sql) {
  sqlite3_exec(connection_.handle(), sql, nullptr, nullptr, nullptr);
}

bool Storager::CreateResultTables(const NeedQueryTables& tables) {
  for (const auto& [name, fields] : tables) {
    const std::string table = "create table " + name + "(" + JoinColumnDefs(fields) + ")";
    const std::string index = "CREATE UNIQUE INDEX " + name + kUniqueIndexSuffix + " on " + name +
                              "(" + JoinColumnNamesIf(fields, IsUniqueField) + ")";
    Execute("PRAGMA journal_mode=WAL;");
    Execute(table.c_str());
    Execute(index.c_str());
  }
  return true;
}
