#pragma once

#include <vector>

#include "recovery/evidence.h"

namespace recovery {

// The bytes of all cells that SQLite reads today, with their overflow pages, of every table and
// index: for each file of the evidence, in order and without overlap.
std::vector<std::vector<Span>> UsedCells(const Evidence& evidence);

}  // namespace recovery
