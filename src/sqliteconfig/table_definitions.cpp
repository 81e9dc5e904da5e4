#include <utility>

#include "common/sqlitecommon/sqlite_statement.h"
#include "sqliteconfig/sqlite_config.h"
#include "sqliteconfig/type_names.h"

bool SqliteConfig::GetCreateTableSql(int32_t system_type, int32_t data_type, int32_t system_version,
                                     const std::string& table_name, std::vector<std::string>& out) {
  InstallBusyHandler();
  SqliteStatement query;
  const bool ready =
      query.Prepare(connection_.handle(),
                    "select sql from create_table_sql where system_type = ? and data_type = ? and "
                    "system_version <= ? and table_name= ?") == SQLITE_OK &&
      query.BindText(1, SystemTypeName(system_type)) == SQLITE_OK &&
      query.BindText(2, DataTypeName(data_type)) == SQLITE_OK &&
      query.BindInt64(3, system_version) == SQLITE_OK && query.BindText(4, table_name) == SQLITE_OK;
  while (ready && query.Step() == SQLITE_ROW) out.push_back(query.ColumnText(0));
  return true;
}

bool SqliteConfig::GetFieldFeatures(int32_t system_type, int32_t data_type,
                                    const std::string& table_name,
                                    std::unordered_map<std::string, FieldFeatureRow>& out) {
  InstallBusyHandler();
  SqliteStatement query;
  const bool ready =
      query.Prepare(connection_.handle(),
                    "SELECT field_name, is_not_null, field_type, min, max, item_range, "
                    "item_not_exist_value, field_type_candidate FROM field_features WHERE "
                    "system_type = ? AND data_type = ? AND table_name = ?") == SQLITE_OK &&
      query.BindInt64(1, system_type) == SQLITE_OK &&
      query.BindText(2, DataTypeName(data_type)) == SQLITE_OK &&
      query.BindText(3, table_name) == SQLITE_OK;
  while (ready && query.Step() == SQLITE_ROW) {
    FieldFeatureRow row;
    row.field_name = query.ColumnText(0);
    row.is_not_null = query.ColumnInt(1);
    row.field_type = query.ColumnInt(2);
    row.min = query.ColumnInt64(3);
    row.max = query.ColumnInt64(4);
    row.item_range = ParseByteSet(query.ColumnText(5));
    row.item_not_exist_value = ParseByteSet(query.ColumnText(6));
    row.field_type_candidate = query.ColumnInt(7);
    std::string name = row.field_name;
    out.try_emplace(std::move(name), std::move(row));
  }
  return query.result() == SQLITE_OK;
}
