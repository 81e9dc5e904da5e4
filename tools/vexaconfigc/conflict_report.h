#pragma once

#include <iosfwd>
#include <vector>

#include "source_model.h"

namespace vexaconfigc {

// Writes what each table holds, and where its layouts get in each other's way: which feature of
// which layout judges which column of which other layout, since features go by position and all of
// them judge every record. Layouts that can meet in one scan are compared: the carved ones with
// each other, and each live one with the carved ones.
void PrintReport(const std::vector<Application>& applications, std::ostream& out);

}  // namespace vexaconfigc
