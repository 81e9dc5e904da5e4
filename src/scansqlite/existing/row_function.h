#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

#include "sqliteconfig/config_records.h"
#include "storager/bound_row.h"

// Takes all columns of a row at once. A query that calls this SQL function with its columns hands
// them over as one array, where asking for them one by one takes a call with a lock for each.
// https://www.sqlite.org/appfunc.html
class RowFunction {
 public:
  // Makes the function known to `connection`, which it must not outlive. In the end the kind of
  // each argument's last value goes into `fields`, one for each argument; a NULL changes none.
  RowFunction(sqlite3* connection, TableFields& fields);
  ~RowFunction();
  RowFunction(const RowFunction&) = delete;
  RowFunction& operator=(const RowFunction&) = delete;

  // The call with these arguments, as it stands in a query.
  static std::string Call(const std::string& arguments);

  // The values of the last call. A text ends at its first zero byte. They stay until the next one.
  const BoundValue* values() const { return values_.data(); }

  // Calls since the last time this was asked. A query that sorts its rows calls for all of them
  // before it gives the first one, so that the values are not those of the row.
  uint64_t TakeCalls();

 private:
  static void Run(sqlite3_context* context, int count, sqlite3_value** arguments);
  void Take(int count, sqlite3_value** arguments);
  BoundValue TakeValue(sqlite3_value* value);
  const uint8_t* Keep(const void* bytes, size_t size);
  void MakeRoom(size_t size);

  sqlite3* connection_;
  TableFields& fields_;
  std::vector<BoundValue> values_;
  std::vector<int32_t> kinds_;  // of each column's last value that is not NULL
  std::vector<uint8_t> bytes_;  // of the texts and blobs: the arguments live for the call only
  size_t bytes_size_ = 0;
  uint64_t calls_ = 0;
};
