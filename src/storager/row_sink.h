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
#include "storager/unique_index.h"

// How far the unique index is left out while rows go into their table. An index made at the end
// sorts all keys in memory, which the limits keep below what SQLite would write to a file for.
struct LateIndexLimits {
  size_t few_rows = 1000;  // so many go in with the index: for less it is not worth the change
  size_t rows = size_t{1} << 18;
  size_t key_bytes = size_t{8} << 20;
};

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

  // Like SaveAll, for the first rows of a table, of which most are new. The unique index is left
  // out meanwhile, if that changes nothing. False when a row failed without it or it could not be
  // made again: then the transaction has to be rolled back, and the rows come once more, to
  // SaveAll.
  bool SaveMany(RowSource& rows, UniqueIndex& index, const LateIndexLimits& limits);

  // The keys as they are now, and back to them after a transaction was rolled back.
  SavedKeys::Mark MarkKeys() const;
  void ForgetKeysSince(const SavedKeys::Mark& mark);

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
  enum class Novelty { kKnown, kNew, kPossiblyNew };

  // Whether the row would be dropped, by its key. Whatever is not known yet counts as saved from
  // now on, but for a row that may repeat a key unseen, if `must_be_sure`: it is left as it was.
  Novelty Judge(const BoundValue* values, bool must_be_sure);
  void Feed(NewRows& rows);
  void SaveRest(NewRows& rows);
  bool InsertRow(const BoundValue* values);
  void ForgetKeys();
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
