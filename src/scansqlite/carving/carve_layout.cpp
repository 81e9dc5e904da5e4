#include "scansqlite/carving/carve_layout.h"

namespace {

int32_t CandidateTypeOf(const FeatureMaps& features, int32_t column) {
  if (features.empty()) return kFieldNone;
  const auto feature = features.front().find(column);
  return feature == features.front().end() ? kFieldNone : feature->second.field_type_candidate;
}

}  // namespace

std::vector<ColumnRule> MakeColumnRules(const SchemaCandidate& candidate,
                                        const FeatureMaps& features) {
  std::vector<ColumnRule> rules;
  for (const SqlColumnInfo& column : candidate.columns) {
    const int32_t field_type_candidate =
        CandidateTypeOf(features, static_cast<int32_t>(rules.size()));
    ColumnRule rule;
    rule.is_primary_key = column.is_primary_key;
    for (const int32_t storage_class : {kClassInteger, kClassReal, kClassText, kClassBlob}) {
      rule.allowed_classes[static_cast<size_t>(storage_class)] =
          IsSerialAllowed(column.type_code, storage_class, field_type_candidate);
    }
    rules.push_back(rule);
  }
  return rules;
}

bool FirstColumnIsKey(const SchemaCandidate& candidate) {
  return !candidate.columns.empty() && candidate.columns.front().is_primary_key;
}
