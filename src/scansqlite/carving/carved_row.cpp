#include "scansqlite/carving/carved_row.h"

#include "scansqlite/carving/validate_field.h"

namespace {

// The class of an empty value that goes into the row all the same: an empty text.
bool IsTextClass(int32_t storage_class) {
  return storage_class == kClassText || storage_class == 5 || storage_class == 7;
}

bool IsRealClass(int32_t storage_class) {
  return storage_class == 1 || storage_class == kClassReal || storage_class == 8;
}

std::vector<uint8_t> BytesOf(const RawValue* value) {
  if (value == nullptr || value->IsEmpty()) return {};
  return {value->bytes.get(), value->bytes.get() + value->length};
}

// A real column that holds an integer in the record stays an integer.
void SetRealField(const ResultFieldInfo& field, const std::vector<RawValue>& values,
                  const RawValue* value, RowValue& row) {
  if (value == nullptr) return;
  if (value->storage_class == kClassInteger) {
    SetIntegerValue(row, field.field_name, RawValueAsInteger(values, field.column_index));
  } else if (IsRealClass(value->storage_class)) {
    row.real_values.emplace(field.field_name, RawValueAsReal(values, field.column_index));
  }
}

// A blob in a text column stays a blob.
void SetTextField(const ResultFieldInfo& field, std::vector<RawValue>& values,
                  const RawValue* value, uint32_t text_encoding, RowValue& row) {
  if (value != nullptr && value->storage_class == kClassBlob) {
    row.blob_values.emplace(field.field_name, BytesOf(value));
    return;
  }
  row.text_values.emplace(field.field_name, CarvedText(values, field.column_index, text_encoding));
}

bool SetField(const ResultFieldInfo& field, std::vector<RawValue>& values, uint32_t text_encoding,
              RowValue& row) {
  const RawValue* value = ValueAt(values, field.column_index);
  if (value != nullptr && value->IsEmpty() && !IsTextClass(value->storage_class)) return true;
  switch (field.field_type) {
    case kFieldInteger:
      SetIntegerValue(row, field.field_name, RawValueAsInteger(values, field.column_index));
      return true;
    case kFieldReal:
      SetRealField(field, values, value, row);
      return true;
    case kFieldText:
      SetTextField(field, values, value, text_encoding, row);
      return true;
    case kFieldBlob:
      row.blob_values.emplace(field.field_name, BytesOf(value));
      return true;
    default:
      return false;
  }
}

}  // namespace

bool BuildCarvedRow(std::vector<RawValue>& values, const CarvedRecord& record,
                    const ResultFieldMap& result_fields, uint32_t text_encoding, RowValue& row) {
  bool all_known = true;
  for (const auto& [name, field] : result_fields) {
    if (field.is_row_id_field == 1) {
      SetIntegerValue(row, field.field_name, record.row_id);
    } else if (!SetField(field, values, text_encoding, row)) {
      all_known = false;
    }
  }
  return all_known;
}
