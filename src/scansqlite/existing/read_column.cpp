#include "scansqlite/existing/read_column.h"

#include <cstring>

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

BoundValue BindColumn(const SqliteStatement& query, int index, TableFieldInfo& field) {
  sqlite3_stmt* row = query.handle();
  switch (query.ColumnType(index)) {
    case SQLITE_INTEGER:
      field.field_type = kFieldInteger;
      return BoundValue::Integer(sqlite3_column_int64(row, index));
    case SQLITE_FLOAT:
      field.field_type = kFieldReal;
      return BoundValue::Real(sqlite3_column_double(row, index));
    case SQLITE_TEXT: {
      field.field_type = kFieldText;
      static constexpr uint8_t kEmpty = 0;
      const unsigned char* text = sqlite3_column_text(row, index);
      if (text == nullptr) text = &kEmpty;
      return BoundValue::Text(text, std::strlen(reinterpret_cast<const char*>(text)));
    }
    case SQLITE_BLOB: {
      field.field_type = kFieldBlob;
      const void* bytes = sqlite3_column_blob(row, index);
      return BoundValue::Blob(static_cast<const uint8_t*>(bytes),
                              static_cast<size_t>(sqlite3_column_bytes(row, index)));
    }
    default:
      return BoundValue::Null();
  }
}
