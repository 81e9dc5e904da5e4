#include "reference/plain_scan.h"

#include <filesystem>

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

// The statements that made the tables and indexes of a database, in their order.
std::vector<std::string> ReadSchema(const std::string& path) {
  plain_walk::PlainConnection connection;
  connection.Open(path);
  SqliteStatement query;
  query.Prepare(connection.handle(), "SELECT sql FROM sqlite_master WHERE sql NOT NULL");
  std::vector<std::string> statements;
  while (query.Step() == SQLITE_ROW) statements.push_back(query.ColumnText(0));
  return statements;
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

// The library's result, which is empty yet, is made once more with pages of SQLite's own size.
int PlainScan::Init() {
  const int code = probe_.Init();
  if (code != kScanSucceeded) return code;
  probe_.CloseResult();
  const std::vector<std::string> statements = ReadSchema(probe_.context().dest_db_path);
  std::filesystem::remove(probe_.context().dest_db_path);
  result().Execute("PRAGMA journal_mode=WAL");
  for (const std::string& sql : statements) result().Execute(sql.c_str());
  return code;
}

plain_walk::PlainConnection& PlainScan::result() {
  if (!result_.is_open()) result_.Open(probe_.context().dest_db_path);
  return result_;
}

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
  plain_walk::PlainConnection connection;
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
  insert.Prepare(result().handle(), MakeInsertSql(table_name, fields));
  result().Execute("BEGIN");
  query.Step();
  while (query.result() == SQLITE_ROW) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::GetNeedQueryTableInfo");
      return kScanSucceeded;
    }
    SaveRow(fields, ReadRow(query, fields), insert);
    query.Step();
  }
  result().Execute("COMMIT");
  return kScanSucceeded;
}
