#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "scansqlite/schema/table_schema.h"
#include "sqliteconfig/config_records.h"
#include "storager/bound_row.h"
#include "storager/row_sink.h"

// When the unique index of a table is left out while its rows are copied. An index that is made at
// the end sorts all keys in memory; the limits keep that below what SQLite would write to a file
// for. The size of the source stands for the number of rows, for which one would have to look at
// all of its pages.
struct LateIndexLimits {
  uint64_t least_source_bytes = uint64_t{1} << 18;  // in less there is little to gain
  uint64_t source_bytes = uint64_t{1} << 26;
  uint64_t rows = uint64_t{1} << 19;
  size_t key_bytes = size_t{16} << 20;
};

// Copies the live rows of one table with one statement, `insert ... select`: SQLite moves them from
// file to file, and asks a function for each row whether it goes along. The function sees the row
// as the source has it. It keeps back rows that the result holds already, puts in by itself a row
// of which a value has to change (a text ends at its first zero byte, and a blob of no bytes
// becomes NULL), and keeps everything back once the scan is to stop.
class DirectCopy {
 public:
  enum class Ending {
    kDone,
    kStopped,
    kPaused,  // behind rows() rows, the others have to go another way
    kFailed,  // the transaction has to be rolled back; then all rows have to go another way
  };

  // `result` is the connection of the result, inside a transaction, with the source attached. In
  // the end the kinds of the last values go into `fields`, which are the columns of the table; a
  // NULL changes none.
  DirectCopy(sqlite3* result, const TableSchemaInfo& table, TableFields& fields, RowSink& sink);
  ~DirectCopy();
  DirectCopy(const DirectCopy&) = delete;
  DirectCopy& operator=(const DirectCopy&) = delete;

  // `source_bytes` is the size of the source.
  Ending Run(const LateIndexLimits& limits, uint64_t source_bytes);

  // Rows of the source that were copied or kept back for good.
  uint64_t rows() const { return rows_; }

  bool was_stopped() const { return was_stopped_; }

 private:
  static void Ask(sqlite3_context* context, int count, sqlite3_value** values);

  bool IsOrdinaryTable() const;
  bool SortsRows() const;

  bool Take(sqlite3_value** values);
  bool IsOver();
  bool ReadTypes(sqlite3_value** values);
  void ReadKey(sqlite3_value** values);

  sqlite3* result_;
  const TableSchemaInfo& table_;
  TableFields& fields_;
  RowSink& sink_;
  std::string sql_;
  std::vector<uint8_t> types_;   // of each column's last value that is not NULL; 0 is none yet
  std::vector<BoundValue> row_;  // the key, or all of a row that changes
  bool has_index_ = true;
  uint64_t rows_left_ = 0;  // until the index has to come back
  size_t key_bytes_left_ = 0;
  uint64_t rows_ = 0;
  bool is_over_ = false;
  bool was_stopped_ = false;
};
