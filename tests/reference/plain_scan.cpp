#include "reference/plain_scan.h"

#include "common/common/log.h"
#include "common/common/scan_control.h"
#include "common/common/source_path.h"
#include "reference/save_row.h"
#include "scansqlite/existing/read_column.h"
#include "storager/column_lists.h"

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

int PlainScan::Scan() {
  LogEx(kLogModule, kLogInfo, "Enter %s", "ScanSqlite::Scan");
  const int result = ScanExist();
  LogEx(kLogModule, kLogInfo, "End %s", "ScanSqlite::Scan");
  return result == kScanSucceeded ? ScanDeleted() : result;
}

int PlainScan::ScanExist() {
  LogEx(kLogModule, kLogInfo, "Enter %s", "ScanSqlite::ScanExist");
  LogEx(kLogModule, kLogInfo, "End %s", "ScanSqlite::ScanExist");
  return QueryAndSave(probe_.need_query_tables());
}

int PlainScan::ScanDeleted() {
  LogEx(kLogModule, kLogInfo, "Enter %s", "ScanSqlite::ScanDeleted");
  LogEx(kLogModule, kLogInfo, "End %s", "ScanSqlite::ScanDeleted");
  const int result = WalkLog(nullptr);
  return probe_.is_scan_database() ? WalkMainFile(nullptr) : result;
}

std::vector<plain_walk::Hit> PlainScan::LogHits() {
  Hits hits;
  WalkLog(&hits);
  return hits;
}

std::vector<plain_walk::Hit> PlainScan::MainFileHits() {
  Hits hits;
  WalkMainFile(&hits);
  return hits;
}

int PlainScan::QueryAndSave(NeedQueryTables& tables) {
  SqliteConnection connection;
  if (connection.Open(probe_.working_db_path()) != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line database open fail.", kSourceScanSqlite,
          __LINE__);
    return kScanWorkingCopyNotOpen;
  }
  for (auto& [name, fields] : tables) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::QueryAndSave");
      break;
    }
    const TableSchemaInfo* table = probe_.table_infos().Find(name);
    if (table == nullptr) continue;
    SqliteStatement query;
    query.Prepare(connection.handle(), MakeSelectSql(*table, fields));
    SaveTable(query, name, fields);
  }
  return kScanSucceeded;
}

int PlainScan::SaveTable(SqliteStatement& query, const std::string& table_name,
                         TableFields& fields) {
  SqliteStatement insert;
  insert.Prepare(probe_.storager().handle(), MakeInsertSql(table_name, fields));
  probe_.storager().Execute("BEGIN");
  query.Step();
  while (query.result() == SQLITE_ROW) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::GetNeedQueryTableInfo");
      return kScanSucceeded;
    }
    SaveRow(fields, ReadRow(query, fields), insert);
    query.Step();
  }
  probe_.storager().Execute("COMMIT");
  return kScanSucceeded;
}
