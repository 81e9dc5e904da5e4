#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Checks what each feature of a table says by itself: a column that no layout holds, the row id,
// limits and kinds that no value meets, and byte sets. Needs the layouts' columns.
void CheckFeatures(const Table& table, const std::string& file, Diagnostics& diagnostics);

}  // namespace vexaconfigc
