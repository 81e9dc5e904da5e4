#include "common/common/log.h"
#include "common/common/scan_control.h"
#include "common/common/source_path.h"
#include "scansqlite/existing/read_column.h"
#include "scansqlite/scan_sqlite.h"
#include "storager/column_lists.h"
#include "storager/save_row.h"

namespace {

std::string MakeSelectSql(const TableSchemaInfo& table, const TableFields& fields) {
  std::string sql = "select " + JoinColumnNames(fields) + " from " + table.table_name;
  if (table.need_order_by_rowid == 1) sql += " ORDER BY rowid ASC";
  return sql;
}

RowValue ReadRow(const SqliteStatement& query, TableFields& fields) {
  RowValue row;
  const int column_count = query.ColumnCount();
  int index = 0;
  for (TableFieldInfo& field : fields) {
    if (index >= column_count) break;
    ReadColumn(query, index++, row, field);
  }
  return row;
}

}  // namespace

int ScanSqlite::QueryAndSave(NeedQueryTables& tables) {
  SqliteConnection connection;
  if (connection.Open(working_db_path_) != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line database open fail.", kSourceScanSqlite,
          __LINE__);
    return kScanWorkingCopyNotOpen;
  }
  for (auto& [name, fields] : tables) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::QueryAndSave");
      break;
    }
    const TableSchemaInfo* table = table_infos_.Find(name);
    if (table == nullptr) continue;
    SqliteStatement query;
    query.Prepare(connection.handle(), MakeSelectSql(*table, fields));
    GetNeedQueryTableInfo(query, name, tables);
  }
  return kScanSucceeded;
}

// A stop leaves the table's transaction open. Closing the result database rolls it back, unless a
// deleted scan follows, whose first COMMIT on the same connection keeps the rows.
int ScanSqlite::GetNeedQueryTableInfo(SqliteStatement& query, const std::string& table_name,
                                      NeedQueryTables& tables) {
  TableFields* fields = tables.Find(table_name);
  if (fields == nullptr) return kScanSucceeded;
  SqliteStatement insert;
  insert.Prepare(storager_->handle(), MakeInsertSql(table_name, *fields));
  storager_->Execute("BEGIN");
  query.Step();
  while (query.result() == SQLITE_ROW) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::GetNeedQueryTableInfo");
      return kScanSucceeded;
    }
    SaveRow(*fields, ReadRow(query, *fields), insert);
    query.Step();
  }
  storager_->Execute("COMMIT");
  return kScanSucceeded;
}
