#include "scansqlite/existing/read_column.h"

void ReadColumn(const SqliteStatement& query, int index, RowValue& row, TableFieldInfo& field) {
  const std::string name = query.ColumnName(index);
  switch (query.ColumnType(index)) {
    case SQLITE_INTEGER:
      SetIntegerValue(row, name, query.ColumnInt64(index));
      field.field_type = kFieldInteger;
      break;
    case SQLITE_FLOAT:
      row.real_values.emplace(name, query.ColumnDouble(index));
      field.field_type = kFieldReal;
      break;
    case SQLITE_TEXT:
      row.text_values.emplace(name, query.ColumnText(index));
      field.field_type = kFieldText;
      break;
    case SQLITE_BLOB:
      row.blob_values.emplace(name, query.ColumnBlob(index));
      field.field_type = kFieldBlob;
      break;
    default:
      break;
  }
}
