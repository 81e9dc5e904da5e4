#pragma once

#include "scansqlite/deleted/table_pass.h"
#include "scansqlite/scan_sqlite.h"
#include "storager/column_lists.h"

// Carves one table inside one transaction, calling `scan_candidate` with a TablePass for each of
// its layouts. A table without features or result columns is passed over.
template <typename ScanCandidate>
void ScanSqlite::CarveTable(const TableSchemaInfo& table, ScanCandidate&& scan_candidate) {
  const FeatureMaps* features = table_features_.Find(table.table_name);
  const TableFields* fields = need_query_tables_.Find(table.table_name);
  const ResultFieldMap* result_fields = result_field_maps_.Find(table.table_name);
  if (features == nullptr || fields == nullptr || result_fields == nullptr) return;
  SqliteStatement insert;
  insert.Prepare(storager_->handle(), MakeInsertSql(table.table_name, *fields));
  storager_->Execute("BEGIN");
  for (const SchemaCandidate& candidate : table.candidates) {
    TablePass pass;
    pass.layout.header = &db_header_;
    pass.layout.features = features;
    pass.layout.result_fields = result_fields;
    pass.layout.first_column_is_key = FirstColumnIsKey(candidate);
    pass.layout.flexible_cnt = table.flexible_cnt;
    pass.layout.columns = MakeColumnRules(candidate, *features);
    pass.fields = fields;
    pass.row_id_column = RowIdColumnOf(*result_fields);
    pass.guess_row_ids = table.need_guess_row_id == 1;
    pass.insert = &insert;
    scan_candidate(pass);
  }
  storager_->Execute("COMMIT");
}
