#include "scansqlite/carving/record_plan.h"

#include <algorithm>
#include <limits>

namespace {

constexpr uint16_t kSmallestPage = 512;

bool SameRanges(const FieldFeature& a, const FieldFeature& b) {
  return std::equal(
      a.value_ranges.begin(), a.value_ranges.end(), b.value_ranges.begin(), b.value_ranges.end(),
      [](const ValueRange& x, const ValueRange& y) { return x.min == y.min && x.max == y.max; });
}

bool SameCheck(const FieldFeature& a, const FieldFeature& b) {
  return a.column_index == b.column_index && a.is_not_null == b.is_not_null &&
         a.field_type == b.field_type && a.field_type_candidate == b.field_type_candidate &&
         SameRanges(a, b) && a.item_range == b.item_range &&
         a.item_not_exist_value == b.item_not_exist_value;
}

// Numbers are cheap to judge, and those that must be there refuse most.
int CostOf(const FieldFeature& feature) {
  const int base = feature.field_type == kFieldInteger ? 0
                   : feature.field_type == kFieldReal  ? 2
                                                       : 4;
  return base + (feature.is_not_null == 1 ? 0 : 1);
}

std::vector<uint8_t> RefusedBytes(const FieldFeature& feature) {
  if (feature.item_range.empty()) return {};
  std::vector<uint8_t> refused(256);
  for (uint32_t byte = 0; byte < 256; ++byte) {
    const auto value = static_cast<uint8_t>(byte);
    const bool passes =
        feature.item_range.Contains(value) && !feature.item_not_exist_value.Contains(value);
    refused[byte] = passes ? 0 : 1;
  }
  return refused;
}

bool ReadsText(const FieldFeature& feature) {
  return feature.field_type == kFieldText || feature.field_type_candidate == kFieldText;
}

ValueCheck MakeCheck(uint32_t column, const FieldFeature& feature) {
  ValueCheck check;
  check.column = column;
  check.feature = &feature;
  check.refused_bytes = RefusedBytes(feature);
  check.takes_number = feature.field_type == kFieldInteger;
  check.admits_null = check.takes_number && feature.is_not_null != 1;
  check.lowest = std::numeric_limits<int64_t>::min();
  check.highest = std::numeric_limits<int64_t>::max();
  for (const ValueRange& range : feature.value_ranges) {
    check.lowest = std::max(check.lowest, range.min);
    check.highest = std::min(check.highest, range.max);
  }
  return check;
}

std::vector<ValueCheck> MergeChecks(const FeatureMaps& features) {
  std::vector<ValueCheck> checks;
  for (const FeatureMap& map : features) {
    for (const auto& entry : map) {
      const FieldFeature& feature = entry.second;
      const bool is_known = std::any_of(checks.begin(), checks.end(), [&](const ValueCheck& check) {
        return SameCheck(*check.feature, feature);
      });
      if (!is_known) checks.push_back(MakeCheck(static_cast<uint32_t>(entry.first), feature));
    }
  }
  for (ValueCheck& check : checks) {
    check.reads_after_cleaning =
        std::any_of(checks.begin(), checks.end(), [&check](const ValueCheck& other) {
          return other.column == check.column && ReadsText(*other.feature);
        });
  }
  std::stable_sort(checks.begin(), checks.end(), [](const ValueCheck& a, const ValueCheck& b) {
    return CostOf(*a.feature) < CostOf(*b.feature);
  });
  return checks;
}

RecordPlan::ByteLengths MakeByteLengths(const SerialTypeSet& set) {
  RecordPlan::ByteLengths lengths{};
  for (uint32_t byte = 0; byte < lengths.size(); ++byte) {
    SerialTypeCell cell;
    cell.serial_type = byte;
    DecodeSerialType(cell);
    lengths[byte] = static_cast<uint8_t>(cell.payload_length);
    if (byte >= 0x80) {
      lengths[byte] = RecordPlan::kLongType;
    } else if (!set.HasShort(byte)) {
      lengths[byte] = RecordPlan::kRefused;
    }
  }
  return lengths;
}

bool HasPlainFields(const ResultFieldMap& result_fields) {
  return std::all_of(result_fields.begin(), result_fields.end(), [](const auto& entry) {
    const ResultFieldInfo& field = entry.second;
    return entry.first == field.field_name &&
           (field.is_row_id_field == 0 || field.is_row_id_field == 1) &&
           field.field_type >= kFieldInteger && field.field_type <= kFieldBlob;
  });
}

std::vector<FieldSource> MakeFieldSources(const TableFields& fields,
                                          const ResultFieldMap& result_fields) {
  std::vector<FieldSource> sources;
  for (const TableFieldInfo& field : fields) {
    FieldSource source;
    const ResultFieldInfo* result = result_fields.Find(field.field_name);
    source.is_absent = result == nullptr;
    if (result != nullptr) {
      source.is_row_id = result->is_row_id_field == 1;
      source.column = result->column_index;
      source.field_type = result->field_type;
      source.is_usual = !source.is_row_id && source.column >= 0 &&
                        (source.field_type == kFieldInteger || source.field_type == kFieldText);
    }
    sources.push_back(source);
  }
  return sources;
}

}  // namespace

RecordPlan MakeRecordPlan(const CarveLayout& layout, const TableFields& fields, SetDepth depth) {
  RecordPlan plan;
  plan.layout = &layout;
  plan.first = layout.first_column_is_key ? 1 : 0;
  plan.width = layout.columns.size();
  plan.required = RequiredCells(layout);
  plan.sets = MakeSerialTypeSets(layout, depth);
  for (size_t column = 0; column < plan.width; ++column) {
    plan.is_primary_key.push_back(layout.columns[column].is_primary_key);
    plan.byte_lengths.push_back(MakeByteLengths(plan.sets[column]));
  }
  plan.checks = MergeChecks(*layout.features);
  plan.fields = MakeFieldSources(fields, *layout.result_fields);
  plan.is_fast = layout.header->text_encoding == kEncodingUtf8 &&
                 layout.header->page_size >= kSmallestPage && HasPlainFields(*layout.result_fields);
  return plan;
}
