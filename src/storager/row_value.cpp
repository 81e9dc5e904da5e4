#include "storager/row_value.h"

int32_t ValueKindOf(const RowValue& row, const std::string& column_name) {
  if (row.text_values.contains(column_name)) return kFieldText;
  if (row.integer_values.contains(column_name)) return kFieldInteger;
  if (row.real_values.contains(column_name)) return kFieldReal;
  if (row.blob_values.contains(column_name)) return kFieldBlob;
  return kFieldNone;
}

std::string GetTextValue(const RowValue& row, const std::string& column_name) {
  const auto at = row.text_values.find(column_name);
  return at == row.text_values.end() ? std::string() : at->second;
}

std::vector<uint8_t> GetBlobValue(const RowValue& row, const std::string& column_name) {
  const auto at = row.blob_values.find(column_name);
  return at == row.blob_values.end() ? std::vector<uint8_t>() : at->second;
}

void SetIntegerValue(RowValue& row, const std::string& column_name, int64_t value) {
  row.integer_values.insert_or_assign(column_name, value);
}
