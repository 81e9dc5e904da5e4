#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Checks the result columns of a table: a column that no layout holds, one given twice, the row id,
// the unique key, and names that SQLite does not take unquoted. Needs the layouts' columns.
void CheckResults(const Table& table, const std::string& file, Diagnostics& diagnostics);

}  // namespace vexaconfigc
