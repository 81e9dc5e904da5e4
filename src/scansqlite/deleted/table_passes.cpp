#include "scansqlite/deleted/deleted_pass.h"
#include "scansqlite/deleted/row_batch.h"
#include "scansqlite/scan_sqlite.h"
#include "storager/column_lists.h"

uint32_t ScanSqlite::TableNumber(const std::string& table_name) const {
  uint32_t number = 1;
  for (const auto& [name, table] : table_infos_) {
    if (name == table_name) return number;
    ++number;
  }
  return 0;
}

// A table that both deleted scans leave out gets no entry. One without features or result columns
// gets an entry without passes: a small one still costs a query for its root page.
std::vector<TablePasses> ScanSqlite::MakeTablePasses() const {
  std::vector<TablePasses> tables;
  for (const auto& [name, table] : table_infos_) {
    if (table.scan_type == 1) continue;
    TablePasses& entry = tables.emplace_back();
    entry.table = &table;
    entry.number = TableNumber(name);
    const FeatureMaps* features = table_features_.Find(table.table_name);
    const ResultFieldMap* result_fields = result_field_maps_.Find(table.table_name);
    entry.fields = need_query_tables_.Find(table.table_name);
    if (features == nullptr || result_fields == nullptr) entry.fields = nullptr;
    if (entry.fields == nullptr) continue;
    entry.row_id_column = RowIdColumnOf(*result_fields);
    entry.guess_row_ids = table.need_guess_row_id == 1;
    for (const SchemaCandidate& candidate : table.candidates) {
      entry.passes.push_back(MakeDeletedPass(db_header_, candidate, *features, *result_fields,
                                             *entry.fields, table.flexible_cnt));
    }
  }
  return tables;
}

void ScanSqlite::SaveCarvedRows(TablePasses& table, const RunPass& run_pass) {
  if (table.fields == nullptr) return;
  SqliteStatement insert;
  insert.Prepare(storager_->handle(), MakeInsertSql(table.table->table_name, *table.fields));
  RowSink sink(*table.fields, insert, KeysOf(table.table->table_name), table.number);
  sink.UseFeed(storager_->handle(), table.table->table_name);
  RowBatch rows(sink, table.row_id_column, table.guess_row_ids);
  storager_->Execute("BEGIN");
  for (const auto& pass : table.passes) run_pass(*pass, rows);
  storager_->Execute("COMMIT");
}
