#include "data/sample_config.h"

#include "sqliteconfig/config_records.h"
#include "support/config_maker.h"

namespace bench {

namespace {

int32_t KindOf(const Column& column) {
  if (column.type == "TEXT") return kFieldText;
  if (column.type == "REAL") return kFieldReal;
  if (column.type == "BLOB") return kFieldBlob;
  return kFieldInteger;
}

void AddColumn(ConfigMaker& config, const Table& table, const Column& column) {
  const bool is_alias = column.fill == Fill::kAlias;
  config.AddField(table.name, {column.name, is_alias ? "INTEGER" : column.type, KindOf(column),
                               column.is_unique ? 1 : 0, is_alias ? 1 : 0});
  if (!column.check) return;
  const Check& check = *column.check;
  ConfigFeature feature;
  feature.field = column.name;
  feature.is_not_null = check.is_not_null ? 1 : 0;
  feature.field_type = check.kind;
  feature.min = check.min;
  feature.max = check.max;
  feature.field_type_candidate = check.or_kind;
  config.AddFeature(table.name, feature);
}

}  // namespace

void WriteSampleConfig(const std::string& path, const std::vector<Table>& tables,
                       const std::vector<size_t>& other_widths) {
  ConfigMaker config(path);
  for (const Table& table : tables) {
    ConfigTable flags;
    flags.flexible_cnt = table.flexible_cnt;
    flags.need_guess_row_id = 1;
    flags.need_order_by_rowid = 1;
    config.AddTable(table.name, flags);
    for (const size_t width : other_widths) {
      config.AddLayout(table.name, CreateText(table, width));
    }
    for (const Column& column : table.columns) AddColumn(config, table, column);
  }
  config.ScanDatabase(1);
}

}  // namespace bench
