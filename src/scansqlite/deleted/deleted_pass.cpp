#include "scansqlite/deleted/deleted_pass.h"

std::unique_ptr<DeletedPass> MakeDeletedPass(const DbHeaderInfo& header,
                                             const SchemaCandidate& candidate,
                                             const FeatureMaps& features,
                                             const ResultFieldMap& result_fields,
                                             const TableFields& fields, int64_t flexible_cnt) {
  auto pass = std::make_unique<DeletedPass>();
  CarveLayout& layout = pass->layout;
  layout.header = &header;
  layout.features = &features;
  layout.result_fields = &result_fields;
  layout.first_column_is_key = FirstColumnIsKey(candidate);
  layout.flexible_cnt = flexible_cnt;
  layout.columns = MakeColumnRules(candidate, features);
  pass->careful_plan = MakeRecordPlan(layout, fields, SetDepth::kClasses);
  pass->plan = pass->careful_plan.is_fast ? MakeRecordPlan(layout, fields, SetDepth::kValues)
                                          : pass->careful_plan;
  pass->careful_plan.is_fast = false;
  pass->test = std::make_unique<RecordTest>(pass->plan);
  pass->careful_test = std::make_unique<RecordTest>(pass->careful_plan);
  return pass;
}

std::string RowIdColumnOf(const ResultFieldMap& result_fields) {
  std::string column;
  for (const auto& [name, field] : result_fields) {
    if (field.is_row_id_field != 0) column = field.field_name;
  }
  return column;
}
