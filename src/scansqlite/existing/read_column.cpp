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

// One call takes the value out of the query; those on the value itself cost next to nothing. That
// is allowed as long as no other thread uses the connection.
// https://www.sqlite.org/c3ref/column_blob.html
BoundValue BindColumn(const SqliteStatement& query, int index, TableFieldInfo& field) {
  sqlite3_value* value = sqlite3_column_value(query.handle(), index);
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      field.field_type = kFieldInteger;
      return BoundValue::Integer(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      field.field_type = kFieldReal;
      return BoundValue::Real(sqlite3_value_double(value));
    case SQLITE_TEXT: {
      field.field_type = kFieldText;
      static constexpr uint8_t kEmpty = 0;
      const unsigned char* text = sqlite3_value_text(value);
      if (text == nullptr) text = &kEmpty;
      return BoundValue::Text(text, std::strlen(reinterpret_cast<const char*>(text)));
    }
    case SQLITE_BLOB: {
      field.field_type = kFieldBlob;
      const void* bytes = sqlite3_value_blob(value);
      return BoundValue::Blob(static_cast<const uint8_t*>(bytes),
                              static_cast<size_t>(sqlite3_value_bytes(value)));
    }
    default:
      return BoundValue::Null();
  }
}
