#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/sqlitecommon/create_sql_parser.h"
#include "common/sqlitecommon/sqlite_connection.h"
#include "sqliteconfig/config_records.h"

// The columns of each table that the source really holds, by table and column name.
using ColumnsByTable =
    std::unordered_map<std::string, std::unordered_map<std::string, SqlColumnInfo>>;

// The configuration database VexaConfiger.db: what to scan in a database of a given application,
// and how. Reads only. A locked configuration is waited for without limit.
class SqliteConfig {
 public:
  // Opens the configuration database at `path` (UTF-8), which is created empty when missing; null
  // when it cannot be opened.
  static std::unique_ptr<SqliteConfig> Create(const std::string& path);
  virtual ~SqliteConfig() = default;

  // Appends the tables to scan, in row order. False when the query could not be prepared.
  bool GetNeedScanTables(int32_t system_type, int32_t data_type, std::vector<ScanTableInfo>& out);

  // Whether the main file takes part in the deleted scan; a missing row means that it does not.
  // False, and `is_scan_database` untouched, when the query failed.
  bool GetScanType(int32_t system_type, int32_t data_type, bool& is_scan_database);

  // Appends the known CREATE texts of the table up to `system_version`, in row order. Always true.
  bool GetCreateTableSql(int32_t system_type, int32_t data_type, int32_t system_version,
                         const std::string& table_name, std::vector<std::string>& out);

  // The feature rows of the table by column name; the first of two rows for a name stays. The
  // result says nothing: it is false after a full read, too.
  bool GetFieldFeatures(int32_t system_type, int32_t data_type, const std::string& table_name,
                        std::unordered_map<std::string, FieldFeatureRow>& out);

  // The result columns whose table and column the source holds, in both views, in row order.
  // False when the query could not be prepared.
  bool GetNeedQueryTables(int32_t system_type, int32_t data_type,
                          const ColumnsByTable& columns_by_table,
                          NeedQueryTables& need_query_tables, ResultFieldMaps& result_field_maps);

 private:
  SqliteConfig() = default;
  void InstallBusyHandler();

  SqliteConnection connection_;
};
