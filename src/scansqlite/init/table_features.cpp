#include <utility>

#include "scansqlite/scan_sqlite.h"

namespace {

using FeatureRows = std::unordered_map<std::string, FieldFeatureRow>;

FieldFeature MakeFieldFeature(int32_t column_index, const std::string& name,
                              const FieldFeatureRow& row) {
  FieldFeature feature;
  feature.column_index = column_index;
  feature.is_not_null = row.is_not_null;
  feature.field_type = row.field_type;
  feature.field_type_candidate = row.field_type_candidate;
  feature.field_name = name;
  feature.value_ranges.push_back({row.min, row.max});
  feature.item_range = row.item_range;
  feature.item_not_exist_value = row.item_not_exist_value;
  return feature;
}

// The result fields are shared by all candidates: the last one that holds a column decides where
// its value is read.
FeatureMap MakeFeatureMap(const SchemaCandidate& candidate, const FeatureRows& rows,
                          ResultFieldMap& result_fields) {
  FeatureMap features;
  int32_t index = 0;
  for (const SqlColumnInfo& column : candidate.columns) {
    if (ResultFieldInfo* field = result_fields.Find(column.name)) field->column_index = index;
    const auto row = rows.find(column.name);
    if (row != rows.end()) {
      features.emplace(index, MakeFieldFeature(index, column.name, row->second));
    }
    ++index;
  }
  return features;
}

}  // namespace

void ScanSqlite::BuildTableFeatures() {
  for (const auto& [name, table] : table_infos_) {
    ResultFieldMap* result_fields = result_field_maps_.Find(name);
    if (need_query_tables_.Find(name) == nullptr || result_fields == nullptr) continue;
    FeatureRows rows;
    config_->GetFieldFeatures(context_->system_type, context_->data_type, name, rows);
    FeatureMaps maps;
    for (const SchemaCandidate& candidate : table.candidates) {
      maps.push_back(MakeFeatureMap(candidate, rows, *result_fields));
    }
    table_features_[name] = std::move(maps);
  }
}
