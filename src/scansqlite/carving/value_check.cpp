#include "scansqlite/carving/value_check.h"

#include "common/sqlitecommon/clean_text.h"
#include "common/sqlitecommon/raw_value.h"

namespace {

bool IsNull(const RecordValue& value) { return value.serial_type == 0; }

Verdict VerdictOf(bool passes) { return passes ? Verdict::kHit : Verdict::kMiss; }

bool CheckInteger(const FieldFeature& feature, const RecordValue& value) {
  if (IsNull(value)) return feature.is_not_null != 1;
  const int64_t number = value.length == 0 ? 0 : BytesAsInteger(value.bytes, value.length);
  for (const ValueRange& range : feature.value_ranges) {
    if (range.min > number || number > range.max) return false;
  }
  return true;
}

bool CheckReal(const FieldFeature& feature, const RecordValue& value) {
  if (IsNull(value)) return feature.is_not_null != 1;
  const double number = value.length == 0 ? 0.0 : BytesAsReal(value.bytes, value.length);
  for (const ValueRange& range : feature.value_ranges) {
    if (!(number >= static_cast<double>(range.min))) return false;
    if (number > static_cast<double>(range.max)) return false;
  }
  return true;
}

bool LengthFits(const FieldFeature& feature, uint64_t length) {
  for (const ValueRange& range : feature.value_ranges) {
    if (length < static_cast<uint64_t>(range.min) || length > static_cast<uint64_t>(range.max)) {
      return false;
    }
  }
  return true;
}

bool BytesFit(const ValueCheck& check, const RecordValue& value) {
  if (check.refused_bytes.empty()) return true;
  uint32_t refused = 0;
  for (uint32_t i = 0; i < value.length; ++i) refused |= check.refused_bytes[value.bytes[i]];
  return refused == 0;
}

Verdict CheckText(const ValueCheck& check, const RecordValue& value) {
  const FieldFeature& feature = *check.feature;
  if (value.length == 0 || IsConstant(value)) return VerdictOf(feature.is_not_null != 1);
  if (!IsCleanText(value.bytes, value.length)) return Verdict::kOpen;
  return VerdictOf(LengthFits(feature, value.length) && BytesFit(check, value));
}

bool CheckBlob(const ValueCheck& check, const RecordValue& value) {
  const FieldFeature& feature = *check.feature;
  if (value.length == 0 && feature.is_not_null == 1) return false;
  return LengthFits(feature, value.length) && BytesFit(check, value);
}

Verdict CheckAs(int32_t field_type, const ValueCheck& check, const RecordValue& value) {
  const FieldFeature& feature = *check.feature;
  switch (field_type) {
    case kFieldNone:
      return Verdict::kMiss;
    case kFieldInteger:
      return VerdictOf(CheckInteger(feature, value));
    case kFieldReal:
      return VerdictOf(CheckReal(feature, value));
    case kFieldText:
      return CheckText(check, value);
    case kFieldBlob:
      return VerdictOf(CheckBlob(check, value));
    default:
      return Verdict::kHit;
  }
}

}  // namespace

Verdict CheckValue(const ValueCheck& check, const RecordValue& value) {
  const Verdict first = CheckAs(check.feature->field_type, check, value);
  if (first != Verdict::kMiss) return first;
  return CheckAs(check.feature->field_type_candidate, check, value);
}
