#pragma once

#include <string>
#include <vector>

#include "scansqlite/carving/carved_record.h"
#include "storager/row_value.h"

// Works out the row ids of records whose cell head was not found from their neighbours of the same
// page, and puts them into the rows under `row_id_column`. `hints` and `rows` are those of one
// page, in rising order of offsets. Cells fill a page from its end towards its header, so row ids
// count down as the offset rises. The nearer anchor decides, a tie goes to the one below; without
// any the row id is 0.
void GuessRowIds(const std::vector<RowIdHint>& hints, const std::string& row_id_column,
                 std::vector<RowValue>& rows);
