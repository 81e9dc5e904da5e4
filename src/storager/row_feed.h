#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <exception>
#include <string>

#include "common/sqlitecommon/sqlite_statement.h"
#include "storager/bound_row.h"

// Gives rows one after the other: a value for each field, or null behind the last. What a row
// borrows stays in place until the next call.
class RowSource {
 public:
  RowSource() = default;
  virtual ~RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;

  virtual const BoundValue* Next() = 0;
};

// Feeds many rows to one statement. SQLite sees a table-valued function whose rows are those of a
// RowSource: a statement that inserts them all costs much less than one for each row.
// https://www.sqlite.org/vtab.html#eponymous_only_virtual_tables
class RowFeed {
 public:
  // The feed for inserts into `table` on `connection`, which outlives it. `columns` is the list of
  // the column names, `count` their number.
  RowFeed(sqlite3* connection, const std::string& table, const std::string& columns, size_t count);
  ~RowFeed();
  RowFeed(const RowFeed&) = delete;
  RowFeed& operator=(const RowFeed&) = delete;

  // False when the table or the feed could not be prepared: then nothing can be inserted this way.
  bool IsReady() const { return insert_.handle() != nullptr; }

  // Inserts rows until the source ends; one that the unique index refuses is dropped without a
  // word. Gives SQLITE_DONE, or the code of a failure, which ends the statement at the row that
  // met it. What the source throws comes out here, behind the rows that it gave before.
  int Insert(RowSource& rows);

 private:
  friend struct RowFeedModule;

  sqlite3* connection_;
  std::string declaration_;
  RowSource* rows_ = nullptr;
  const BoundValue* row_ = nullptr;
  std::exception_ptr thrown_;
  SqliteStatement insert_;
};
