#include "reference/save_row.h"

namespace {

template <typename Map>
typename Map::mapped_type ValueOrZero(const Map& values, const std::string& name) {
  const auto at = values.find(name);
  return at == values.end() ? typename Map::mapped_type{} : at->second;
}

void BindField(const RowValue& row, const std::string& name, int index,
               SqliteStatement& statement) {
  switch (ValueKindOf(row, name)) {
    case kFieldInteger:
      statement.BindInt64(index, ValueOrZero(row.integer_values, name));
      break;
    case kFieldReal:
      statement.BindDouble(index, ValueOrZero(row.real_values, name));
      break;
    case kFieldText:
      statement.BindText(index, GetTextValue(row, name));
      break;
    case kFieldBlob:
      statement.BindBlob(index, GetBlobValue(row, name));
      break;
    default:
      statement.BindNull(index);
      break;
  }
}

}  // namespace

bool SaveRow(const TableFields& fields, const RowValue& row, SqliteStatement& statement) {
  int index = 1;
  for (const TableFieldInfo& field : fields) BindField(row, field.field_name, index++, statement);
  const bool done = statement.Step() == SQLITE_DONE;
  statement.Reset();
  return done;
}
