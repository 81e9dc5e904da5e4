#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_statement.h"
#include "storager/bound_row.h"
#include "storager/row_feed.h"
#include "storager/row_value.h"
#include "storager/saved_keys.h"

// Where the rows of one table go: its insert statement, a feed for many rows at a time, and the
// keys that already went through it. A row that the unique index refuses is dropped without a
// word. Borrows all that it is given.
class RowSink {
 public:
  // `keys` may be null; `table_number` keeps the keys of different tables apart.
  RowSink(const TableFields& fields, SqliteStatement& insert, SavedKeys* keys,
          uint32_t table_number);

  // Lets SaveAll feed its rows to one statement on `connection`, into the table of this name.
  void UseFeed(sqlite3* connection, const std::string& table_name);

  // Saves one row: a value for each field, in order.
  void SaveRow(const BoundValue* values);

  // Saves rows until the source ends.
  void SaveAll(RowSource& rows);

  // Whether rows can be known by their keys at all.
  bool KeepsKeys() const { return keys_ != nullptr; }

  // Whether a row with the key of this one was saved, so that it would be dropped. Only the values
  // of the unique fields are looked at.
  bool IsKnown(const BoundValue* values);

  const std::vector<uint32_t>& unique_fields() const { return unique_fields_; }
  size_t field_count() const { return fields_.size(); }
  const TableFields& fields() const { return fields_; }

 private:
  class NewRows;

  bool MakeKey(const BoundValue* values);
  SavedKeys::Key key() const { return {key_.data(), key_size_}; }
  void Bind(int index, const BoundValue& value);

  const TableFields& fields_;
  SqliteStatement& insert_;
  SavedKeys* keys_;
  std::unique_ptr<RowFeed> feed_;
  bool has_plain_types_;
  std::vector<uint32_t> unique_fields_;
  uint32_t table_number_;
  std::vector<uint8_t> key_;
  size_t key_size_ = 0;
};

// The values of a row in the order of the fields, of the kind that the row has them. They
// point into the row.
void BindRowValue(const TableFields& fields, const RowValue& row, std::vector<BoundValue>& out);
