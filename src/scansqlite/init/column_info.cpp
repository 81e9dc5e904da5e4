#include <utility>

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "scansqlite/scan_sqlite.h"
#include "scansqlite/schema/schema_candidates.h"

namespace {

constexpr int kLineOpenWorkingDb = 2346;  // stands in the message's text

TableSchemaInfo MakeTableSchemaInfo(const ScanTableInfo& info) {
  TableSchemaInfo table;
  table.is_small_table = info.is_small_table;
  table.is_virtual_table = info.is_virtual_table;
  table.scan_type = info.scan_type;
  table.flexible_cnt = info.flexible_cnt;
  table.need_guess_row_id = info.need_guess_row_id;
  table.need_order_by_rowid = info.need_order_by_rowid;
  return table;
}

}  // namespace

bool ScanSqlite::MergeConfiguredSchemas(const std::string& table_name, TableSchemaInfo& table) {
  std::vector<std::string> texts;
  config_->GetCreateTableSql(context_->system_type, context_->data_type, context_->system_version,
                             table_name, texts);
  MergeSchemaTexts(texts, table);
  return true;
}

bool ScanSqlite::InitColumnInfo(const std::vector<ScanTableInfo>& tables,
                                std::vector<TableSchemaInfo>& out) {
  SqliteConnection connection;
  if (connection.Open(working_db_path_) != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, open database fail", kSourceScanSqlite,
          kLineOpenWorkingDb);
    return false;
  }
  for (const ScanTableInfo& info : tables) {
    TableSchemaInfo table = MakeTableSchemaInfo(info);
    if (!LoadLiveSchema(connection, info.table_name, table)) continue;
    MergeConfiguredSchemas(info.table_name, table);
    if (!table.candidates.empty()) out.push_back(std::move(table));
  }
  return true;
}
