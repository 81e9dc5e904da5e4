#include "scansqlite/carving/validate_field.h"

namespace {

bool IsNullCell(const SerialTypeCells& cells, int32_t index) {
  return index >= 0 && static_cast<size_t>(index) < cells.size() &&
         cells[static_cast<size_t>(index)].is_null;
}

bool ValidateInteger(const FieldFeature& feature, const SerialTypeCells& cells,
                     const std::vector<RawValue>& values) {
  const int64_t number = RawValueAsInteger(values, feature.column_index);
  if (IsNullCell(cells, feature.column_index)) return feature.is_not_null != 1;
  for (const ValueRange& range : feature.value_ranges) {
    if (range.min > number || number > range.max) return false;
  }
  return true;
}

bool ValidateReal(const FieldFeature& feature, const SerialTypeCells& cells,
                  const std::vector<RawValue>& values) {
  const double number = RawValueAsReal(values, feature.column_index);
  if (IsNullCell(cells, feature.column_index)) return feature.is_not_null != 1;
  for (const ValueRange& range : feature.value_ranges) {
    // Written so that a number that is none is refused.
    if (!(number >= static_cast<double>(range.min))) return false;
    if (number > static_cast<double>(range.max)) return false;
  }
  return true;
}

bool LengthIsInRanges(const FieldFeature& feature, uint64_t length) {
  for (const ValueRange& range : feature.value_ranges) {
    if (length < static_cast<uint64_t>(range.min) || length > static_cast<uint64_t>(range.max)) {
      return false;
    }
  }
  return true;
}

bool BytesAreAdmitted(const FieldFeature& feature, const uint8_t* bytes, size_t length) {
  if (feature.item_range.empty()) return true;
  for (size_t i = 0; i < length; ++i) {
    if (!feature.item_range.Contains(bytes[i])) return false;
    if (feature.item_not_exist_value.Contains(bytes[i])) return false;
  }
  return true;
}

bool ValidateText(const FieldFeature& feature, uint32_t text_encoding,
                  std::vector<RawValue>& values) {
  const std::string text = CarvedText(values, feature.column_index, text_encoding);
  if (text.empty()) return feature.is_not_null != 1;
  return LengthIsInRanges(feature, text.size()) &&
         BytesAreAdmitted(feature, reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

bool ValidateBlob(const FieldFeature& feature, const std::vector<RawValue>& values) {
  const RawValue* value = ValueAt(values, feature.column_index);
  const bool is_empty = value == nullptr || value->IsEmpty();
  if (is_empty && feature.is_not_null == 1) return false;
  const size_t length = is_empty ? 0 : static_cast<size_t>(value->length);
  return LengthIsInRanges(feature, length) &&
         (is_empty || BytesAreAdmitted(feature, value->bytes.get(), length));
}

}  // namespace

std::string CarvedText(std::vector<RawValue>& values, int32_t index, uint32_t text_encoding) {
  return text_encoding == kEncodingUtf8 ? RawValueAsText(values, index)
                                        : RawValueAsUtf16Text(values, index);
}

bool ValidateField(int32_t field_type, const FieldFeature& feature, uint32_t text_encoding,
                   const SerialTypeCells& cells, std::vector<RawValue>& values) {
  switch (field_type) {
    case kFieldNone:
      return false;
    case kFieldInteger:
      return ValidateInteger(feature, cells, values);
    case kFieldReal:
      return ValidateReal(feature, cells, values);
    case kFieldText:
      return ValidateText(feature, text_encoding, values);
    case kFieldBlob:
      return ValidateBlob(feature, values);
    default:
      return true;
  }
}

bool ValidateRecord(const FeatureMaps& features, uint32_t text_encoding,
                    const SerialTypeCells& cells, std::vector<RawValue>& values) {
  for (const FeatureMap& map : features) {
    for (const auto& [column, feature] : map) {
      if (!ValidateField(feature.field_type, feature, text_encoding, cells, values) &&
          !ValidateField(feature.field_type_candidate, feature, text_encoding, cells, values)) {
        return false;
      }
    }
  }
  return true;
}
