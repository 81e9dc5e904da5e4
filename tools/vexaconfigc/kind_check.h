#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Doubts about the kinds of a table that is carved: features that read a true value as another one,
// clean a text before they judge it, or refuse NULL; result columns of a kind that their values do
// not have. Needs the layouts' columns.
void CheckKinds(const Table& table, const std::string& file, Diagnostics& diagnostics);

}  // namespace vexaconfigc
