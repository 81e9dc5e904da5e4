#pragma once

#include <string>

#include "recovery/facts.h"

namespace recovery {

// Lets SQLite read the layout's CREATE statement and fills the columns, the row id alias and
// whether the table has row ids. Throws when SQLite refuses it or it makes another table.
void ReadColumns(const std::string& table, Layout& layout);

}  // namespace recovery
