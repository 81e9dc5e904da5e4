#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "scansqlite/carving/carved_record.h"

// Works out the row ids of records whose cell head was not found from their neighbours of the same
// page, and gives them with their index to `take`. `hints` are those of one page, in rising order
// of offsets. Cells fill a page from its end towards its header, so row ids count down as the
// offset rises. The nearer anchor decides, a tie goes to the one below; without any the row id is
// 0.
void ForEachGuessedRowId(const std::vector<RowIdHint>& hints,
                         const std::function<void(size_t, int64_t)>& take);
