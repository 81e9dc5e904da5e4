#pragma once

#include <string>
#include <vector>

#include "common/sqlitecommon/sqlite_connection.h"
#include "scansqlite/schema/table_schema.h"

// Adds the layout that the database holds now as a candidate, also when its text cannot be read
// and the list of columns is empty. False when the database has no such table.
bool LoadLiveSchema(const SqliteConnection& connection, const std::string& table_name,
                    TableSchemaInfo& table);

// Adds the configured layouts whose width no candidate has yet, then makes one layout of wide
// tables whose layouts differ only in few trailing columns.
void MergeSchemaTexts(const std::vector<std::string>& texts, TableSchemaInfo& table);
