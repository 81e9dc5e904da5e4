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

 private:
  SqliteConnection connection_;
};

}  // namespace vexaconfigc
