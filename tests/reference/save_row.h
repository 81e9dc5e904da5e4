#pragma once

#include "common/sqlitecommon/sqlite_statement.h"
#include "sqliteconfig/config_records.h"
#include "storager/row_value.h"

// Inserts one row: binds each field's value, or NULL when the row has none, runs the statement and
// readies it for the next row. `statement` has one placeholder for each field, in order. True when
// the insert finished; a row that the unique index refuses is dropped without a word.
bool SaveRow(const TableFields& fields, const RowValue& row, SqliteStatement& statement);
