#pragma once

#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_connection.h"

namespace vexaconfigc {

// An empty database in memory, to ask SQLite what it makes of a statement.
class MemoryDatabase {
 public:
  MemoryDatabase();

  // SQLite's words when it refuses the statement; the empty text otherwise.
  std::string Run(const std::string& sql);

  // The columns of a table, in order; none when there is no such table.
  std::vector<std::string> ColumnNames(const std::string& table);

  // False for a table WITHOUT ROWID, whose rows lie in the pages of an index.
  bool HasRowIds(const std::string& table);

  // The column that stands for the row id and is NULL in every record; empty when there is none.
  std::string RowIdAlias(const std::string& table);

 private:
  // The first column of all rows of a query about one table.
  std::vector<std::string> Ask(const char* sql, const std::string& table);

  SqliteConnection connection_;
};

}  // namespace vexaconfigc
