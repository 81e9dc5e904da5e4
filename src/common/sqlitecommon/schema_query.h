#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

// The CREATE text of the table in `sqlite_master`, or the empty text.
std::string GetTableSql(sqlite3* connection, const std::string& table_name);

// The root page of the table: 0 when the database has no such table, -1 when it could not be
// asked (a failing step writes two log lines at level 3).
int32_t GetRootPage(sqlite3* connection, const std::string& table_name);
