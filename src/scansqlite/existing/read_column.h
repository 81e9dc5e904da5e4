#pragma once

#include "common/sqlitecommon/sqlite_statement.h"
#include "sqliteconfig/config_records.h"
#include "storager/bound_row.h"
#include "storager/row_value.h"

// Reads one column of the current row into `row`, under the name that SQLite gives it, and writes
// the kind of the value into the field. A NULL changes nothing.
void ReadColumn(const SqliteStatement& query, int index, RowValue& row, TableFieldInfo& field);

// The same without a copy: the value points into the query's row, which holds it until the next
// step. A text ends at its first zero byte.
BoundValue BindColumn(const SqliteStatement& query, int index, TableFieldInfo& field);
