#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_statement.h"
#include "storager/bound_row.h"
#include "storager/row_value.h"
#include "storager/saved_keys.h"

// Where the rows of one table go: its insert statement, and the keys that already went through it.
// Has the effect of SaveRow on every row. Borrows all that it is given.
class RowSink {
 public:
  // `keys` may be null; `table_number` keeps the keys of different tables apart.
  RowSink(const TableFields& fields, SqliteStatement& insert, SavedKeys* keys,
          uint32_t table_number);

  // Saves one row: a value for each field, in order.
  void Save(const BoundValue* values);

  size_t field_count() const { return fields_.size(); }
  const TableFields& fields() const { return fields_; }

 private:
  bool MakeKey(const BoundValue* values);
  void Bind(int index, const BoundValue& value);

  const TableFields& fields_;
  SqliteStatement& insert_;
  SavedKeys* keys_;
  std::vector<uint32_t> unique_fields_;
  uint32_t table_number_;
  std::vector<uint8_t> key_;
};

// The values of a row in the order of the fields, each of the kind that SaveRow would bind. They
// point into the row.
void BindRowValue(const TableFields& fields, const RowValue& row, std::vector<BoundValue>& out);
