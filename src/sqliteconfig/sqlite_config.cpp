#include "sqliteconfig/sqlite_config.h"

#include <chrono>
#include <thread>
#include <utility>

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/sqlite_statement.h"
#include "sqliteconfig/type_names.h"

namespace {

// Does not count the earlier calls: the configuration is waited for as long as it takes.
int ConfigBusyHandler([[maybe_unused]] void* argument, [[maybe_unused]] int earlier_calls) {
  std::this_thread::sleep_for(std::chrono::microseconds(100));
  return 1;
}

}  // namespace

std::unique_ptr<SqliteConfig> SqliteConfig::Create(const std::string& path) {
  std::unique_ptr<SqliteConfig> config(new SqliteConfig());
  const int code = config->connection_.Open(path);
  if (code != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to open config db %s", kSourceSqliteConfig,
          __LINE__, path.c_str());
  }
  sqlite3_exec(config->connection_.handle(), "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) return nullptr;
  return config;
}

void SqliteConfig::InstallBusyHandler() {
  sqlite3_busy_handler(connection_.handle(), ConfigBusyHandler, nullptr);
}

bool SqliteConfig::GetNeedScanTables(int32_t system_type, int32_t data_type,
                                     std::vector<ScanTableInfo>& out) {
  const std::string sql =
      "select table_name, is_small_table, is_virtual_table, scan_type, flexible_cnt, "
      "need_guess_row_id, need_order_by_rowid from scan_table_info where system_type = '" +
      SystemTypeName(system_type) + "' and data_type = '" + DataTypeName(data_type) + "'";
  InstallBusyHandler();
  SqliteStatement query;
  if (query.Prepare(connection_.handle(), sql) != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, open database fail.", kSourceSqliteConfig,
          __LINE__);
    return false;
  }
  while (query.Step() == SQLITE_ROW) {
    ScanTableInfo table;
    table.table_name = query.ColumnText(0);
    table.is_small_table = query.ColumnInt(1) == 1;
    table.is_virtual_table = query.ColumnInt(2) == 1;
    table.scan_type = query.ColumnInt(3);
    table.flexible_cnt = query.ColumnInt(4);
    table.need_guess_row_id = query.ColumnInt(5);
    table.need_order_by_rowid = query.ColumnInt(6);
    out.push_back(std::move(table));
  }
  return true;
}

bool SqliteConfig::GetScanType(int32_t system_type, int32_t data_type, bool& is_scan_database) {
  const std::string sql = "SELECT is_scan_database FROM scan_type_info WHERE system_type = '" +
                          SystemTypeName(system_type) + "' AND data_type = '" +
                          DataTypeName(data_type) + "'";
  InstallBusyHandler();
  SqliteStatement query;
  const bool answered = query.Prepare(connection_.handle(), sql) == SQLITE_OK &&
                        (query.Step() == SQLITE_ROW || query.result() == SQLITE_DONE);
  if (!answered) {
    LogEx(kLogModule, kLogError, "SQLite Error : %s\n", sqlite3_errmsg(connection_.handle()));
    return false;
  }
  is_scan_database = query.ColumnInt(0) == 1;
  return true;
}

bool SqliteConfig::GetNeedQueryTables(int32_t system_type, int32_t data_type,
                                      const ColumnsByTable& columns_by_table,
                                      NeedQueryTables& need_query_tables,
                                      ResultFieldMaps& result_field_maps) {
  const std::string sql =
      "select table_name, field_name, field_type_text, field_type, is_unique_field, "
      "is_row_id_field from result_field_info where system_type = '" +
      SystemTypeName(system_type) + "' and data_type = '" + DataTypeName(data_type) + "'";
  InstallBusyHandler();
  SqliteStatement query;
  if (query.Prepare(connection_.handle(), sql) != SQLITE_OK) return false;
  while (query.Step() == SQLITE_ROW) {
    const std::string table_name = query.ColumnText(0);
    const std::string field_name = query.ColumnText(1);
    const auto table = columns_by_table.find(table_name);
    if (table == columns_by_table.end() || !table->second.contains(field_name)) continue;
    TableFieldInfo field{query.ColumnInt(4), query.ColumnInt(3), field_name, query.ColumnText(2)};
    need_query_tables[table_name].push_back(std::move(field));
    ResultFieldInfo carved{0, query.ColumnInt(5), query.ColumnInt(3), field_name};
    result_field_maps[table_name].Insert(field_name, std::move(carved));
  }
  return true;
}
