#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/common/ordered_map.h"
#include "common/sqlitecommon/create_sql_parser.h"
#include "sqliteconfig/config_records.h"

// One possible column list of a table, in declared order.
struct SchemaCandidate {
  bool from_live_db = false;  // read from sqlite_master, not configured
  std::vector<SqlColumnInfo> columns;
};

// One table to scan with the layouts that its records may have. No two candidates have the same
// number of columns.
struct TableSchemaInfo {
  bool is_small_table = false;
  bool is_virtual_table = false;
  int32_t scan_type = 0;
  int32_t flexible_cnt = 0;
  int32_t need_guess_row_id = 0;
  int32_t need_order_by_rowid = 0;
  std::string table_name;
  std::vector<SchemaCandidate> candidates;
};

// Limits of a value, both inclusive.
struct ValueRange {
  int64_t min = 0;
  int64_t max = 0;
};

// The checks of one column of one candidate.
struct FieldFeature {
  int32_t column_index = 0;
  int32_t is_not_null = 0;
  int32_t field_type = 0;
  int32_t field_type_candidate = kFieldNone;
  std::string field_name;
  std::vector<ValueRange> value_ranges;
  ByteSet item_range;
  ByteSet item_not_exist_value;
};

// From column index to the column's checks, walked by ascending column; one map to a candidate.
using FeatureMap = std::map<int32_t, FieldFeature>;
using FeatureMaps = std::vector<FeatureMap>;

using TableInfos = OrderedMap<TableSchemaInfo>;
using TableFeatures = OrderedMap<FeatureMaps>;
