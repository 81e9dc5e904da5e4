#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Checks the layouts of a table against each other. A result column has one position for all
// layouts, and every feature of every layout is applied to every record by position, so that
// layouts go together only where these columns keep their places. Refuses a moved column; warns
// about features that switch narrower layouts or short records off.
void CheckPositions(const Table& table, const std::string& file, Diagnostics& diagnostics);

// The columns whose place counts: result columns besides the row id, which is not read from the
// record, and featured columns. None twice.
std::vector<std::string> ColumnsThatMatter(const Table& table);

// Which layout settles the position of a column: the first that holds it, or nullptr.
const Layout* FirstHolder(const std::vector<const Layout*>& layouts, const std::string& column);

}  // namespace vexaconfigc
