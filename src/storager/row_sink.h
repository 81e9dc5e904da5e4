#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_statement.h"
#include "storager/bound_row.h"
#include "storager/row_feed.h"
#include "storager/row_key.h"
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

  // Puts one row in without a look at its key. False when it was refused.
  bool InsertRow(const BoundValue* values);

  enum class Novelty { kKnown, kNew, kPossiblyNew };

  // Whether the row would be dropped, by its key; only the values of the unique fields are looked
  // at. Whatever is not known yet counts as saved from now on, but for a row that may repeat a key
  // unseen, if `must_be_sure`: it is left as it was.
  Novelty Judge(const BoundValue* values, bool must_be_sure);

  // Nobody knows any more what the result holds.
  void ForgetKeys();

  // The keys as they are now, and back to them after a transaction was rolled back.
  SavedKeys::Mark MarkKeys() const;
  void ForgetKeysSince(const SavedKeys::Mark& mark);

  // Whether a row is refused by the unique index alone, so that many may go in with one statement.
  bool TakesManyRows() const { return has_plain_types_ && insert_.handle() != nullptr; }

  // Whether rows can be known by their keys at all.
  bool KeepsKeys() const { return keys_ != nullptr; }

  // Whether a row with the key of this one was saved, so that it would be dropped. Only the values
  // of the unique fields are looked at.
  bool IsKnown(const BoundValue* values);

  const std::vector<uint32_t>& unique_fields() const { return key_.fields(); }
  size_t field_count() const { return fields_.size(); }
  const TableFields& fields() const { return fields_; }

 private:
  class NewRows;

  void Feed(NewRows& rows);
  void Bind(int index, const BoundValue& value);

  const TableFields& fields_;
  SqliteStatement& insert_;
  SavedKeys* keys_;
  std::unique_ptr<RowFeed> feed_;
  bool has_plain_types_;
  RowKey key_;
};

// The values of a row in the order of the fields, of the kind that the row has them. They
// point into the row.
void BindRowValue(const TableFields& fields, const RowValue& row, std::vector<BoundValue>& out);
