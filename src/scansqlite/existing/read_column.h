#pragma once

#include "common/sqlitecommon/sqlite_statement.h"
#include "sqliteconfig/config_records.h"
#include "storager/row_value.h"

// Reads one column of the current row into `row`, under the name that SQLite gives it, and writes
// the kind of the value into the field. A NULL changes nothing.
void ReadColumn(const SqliteStatement& query, int index, RowValue& row, TableFieldInfo& field);
