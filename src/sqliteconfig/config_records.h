#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/common/ordered_map.h"
#include "sqliteconfig/byte_set.h"

// Field type codes, shared by the configuration and the scanners.
inline constexpr int32_t kFieldNone = -1;
inline constexpr int32_t kFieldInteger = 0;
inline constexpr int32_t kFieldReal = 1;
inline constexpr int32_t kFieldText = 2;
inline constexpr int32_t kFieldBlob = 3;

// One row of scan_table_info: a table of the source and how it is scanned.
struct ScanTableInfo {
  int32_t scan_type = 0;     // 1 keeps the table out of both deleted scans
  int32_t flexible_cnt = 0;  // trailing columns that a record of a wide table may lack
  int32_t need_guess_row_id = 0;
  int32_t need_order_by_rowid = 0;
  bool is_virtual_table = false;
  bool is_small_table = false;  // the main file's scan walks the table's own pages
  std::string table_name;
};

// One row of field_features.
struct FieldFeatureRow {
  std::string field_name;
  int32_t is_not_null = 0;
  int32_t field_type = 0;
  int32_t field_type_candidate = 0;
  int64_t min = 0;
  int64_t max = 0;
  ByteSet item_range;
  ByteSet item_not_exist_value;
};

// One column of a result table, in column order.
struct TableFieldInfo {
  int32_t is_unique_field = 0;
  int32_t field_type = 0;  // the existing scan writes the kind of the last value that it read
  std::string field_name;
  std::string field_type_text;
};

// The same column as the carving side sees it.
struct ResultFieldInfo {
  int32_t column_index = 0;
  int32_t is_row_id_field = 0;
  int32_t field_type = 0;
  std::string field_name;
};

using TableFields = std::vector<TableFieldInfo>;
using NeedQueryTables = OrderedMap<TableFields>;
using ResultFieldMap = OrderedMap<ResultFieldInfo>;
using ResultFieldMaps = OrderedMap<ResultFieldMap>;
