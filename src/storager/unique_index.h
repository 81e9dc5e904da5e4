#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

// The unique index of a result table. It can be left out while many rows go in that are known to
// differ: an index made from rows that are all there takes a third less time than one that takes
// each of them when it comes.
class UniqueIndex {
 public:
  // The index of a table of the result database on `connection`, which outlives this.
  UniqueIndex(sqlite3* connection, const std::string& table_name);

  static std::string NameFor(const std::string& table_name);

  bool Exists() const;

  // Drops the index. Only inside a transaction, which ends with the index made again or undoes
  // everything: so whatever ends the process, the file holds the index. False when there is none,
  // or a statement that still runs keeps it.
  bool Drop();

  // Makes the dropped index again, and says whether it stands: it does not when rows repeat a key
  // or the disk is full. Then the transaction has to be rolled back.
  bool Restore();

 private:
  // Where the schema table holds the index, and the statement that made it.
  struct Entry {
    int64_t row_id = 0;
    std::string sql;
  };

  Entry Find() const;
  void MoveTo(int64_t row_id);

  sqlite3* connection_;
  std::string table_name_;
  Entry dropped_;
};
