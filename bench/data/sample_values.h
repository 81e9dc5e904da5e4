#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

#include "data/dice.h"
#include "data/sample_table.h"

namespace bench {

// Text of several scripts; mostly a line, now and then more than a page.
std::string MessageText(Dice& dice);

// Binds a value of the column for the row with this number, which counts from 1.
void BindSample(Dice& dice, const Column& column, int64_t row, sqlite3_stmt* statement, int index);

}  // namespace bench
