#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Checks the layouts of a table against each other. A result column has one position for all
// layouts, and every feature of every layout is applied to every record by position, so that
// layouts go together only where these columns keep their places. Refuses a moved column; warns
// about features that switch narrower layouts or short records off.
void CheckPositions(const Table& table, const std::string& file, Diagnostics& diagnostics);

// What a reader of the sources should know before adding a layout: for each layout that is live
// only, which columns stand elsewhere than in the carved layouts. One line each, without line feed.
std::vector<std::string> DescribeConflicts(const Table& table);

}  // namespace vexaconfigc
