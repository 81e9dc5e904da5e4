#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Checks what one result column or feature says by itself, and the result table as a whole: a
// column that no layout holds, one given twice, the row id, the unique key, limits that no value
// meets, and byte sets. Needs the layouts' columns.
void CheckResults(const Table& table, const std::string& file, Diagnostics& diagnostics);
void CheckFeatures(const Table& table, const std::string& file, Diagnostics& diagnostics);

}  // namespace vexaconfigc
