#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "scansqlite/carving/serial_type.h"
#include "scansqlite/init/db_header.h"
#include "scansqlite/schema/table_schema.h"

// What the serial type of one column is tested against, worked out before the walk: the test runs
// at nearly every byte of the file.
struct ColumnRule {
  bool is_primary_key = false;            // takes any serial type
  std::array<bool, 5> allowed_classes{};  // by storage class 0 to 4
};

// Everything that one pass of one layout over the pages needs to know of its table. Borrows what
// it points to.
struct CarveLayout {
  const DbHeaderInfo* header = nullptr;
  const FeatureMaps* features = nullptr;  // of all layouts of the table
  const ResultFieldMap* result_fields = nullptr;
  bool first_column_is_key = false;  // the row id alias: NULL in the record
  int64_t flexible_cnt = 0;
  std::vector<ColumnRule> columns;
};

// `features` decides by its first map which further classes a column admits, whatever layout the
// pass carves.
std::vector<ColumnRule> MakeColumnRules(const SchemaCandidate& candidate,
                                        const FeatureMaps& features);

// True when the layout's first column carries the primary flag; false without columns.
bool FirstColumnIsKey(const SchemaCandidate& candidate);

inline bool ColumnAllows(const ColumnRule& rule, int32_t storage_class) {
  return rule.is_primary_key || storage_class < 0 ||
         rule.allowed_classes[static_cast<size_t>(storage_class)];
}
