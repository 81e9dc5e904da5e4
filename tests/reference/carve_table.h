#pragma once

#include "reference/plain_scan.h"
#include "scansqlite/deleted/deleted_pass.h"
#include "storager/column_lists.h"

// Carves one table inside one transaction, calling `scan_candidate` with a TablePass for each of
// its layouts. A table without features or result columns is passed over.
template <typename ScanCandidate>
void PlainScan::CarveTable(const TableSchemaInfo& table, Hits* hits,
                           ScanCandidate&& scan_candidate) {
  const FeatureMaps* features = probe_.table_features().Find(table.table_name);
  const TableFields* fields = probe_.need_query_tables().Find(table.table_name);
  const ResultFieldMap* result_fields = probe_.result_field_maps().Find(table.table_name);
  if (features == nullptr || fields == nullptr || result_fields == nullptr) return;
  SqliteStatement insert;
  if (hits == nullptr) {
    insert.Prepare(result().handle(), MakeInsertSql(table.table_name, *fields));
    result().Execute("BEGIN");
  }
  size_t number = 0;
  for (const SchemaCandidate& candidate : table.candidates) {
    TablePass pass;
    pass.layout.header = &probe_.header();
    pass.layout.features = features;
    pass.layout.result_fields = result_fields;
    pass.layout.first_column_is_key = FirstColumnIsKey(candidate);
    pass.layout.flexible_cnt = table.flexible_cnt;
    pass.layout.columns = MakeColumnRules(candidate, *features);
    pass.fields = fields;
    pass.row_id_column = RowIdColumnOf(*result_fields);
    pass.guess_row_ids = table.need_guess_row_id == 1;
    pass.insert = hits == nullptr ? &insert : nullptr;
    pass.hits = hits;
    pass.table = table.table_name;
    pass.number = number++;
    scan_candidate(pass);
  }
  if (hits == nullptr) result().Execute("COMMIT");
}
