#pragma once

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Position of a column in a layout, or -1.
int PositionOf(const Layout& layout, const std::string& column);

// "the layout of 5 columns (line 12)".
std::string WidthText(const Layout& layout);

// The layouts that are tried beside the live one.
std::vector<const Layout*> CarvedLayouts(const Table& table);

// True when some layout of the table holds the column.
bool AnyLayoutHolds(const Table& table, const std::string& column);

// True when some layout has the column as its row id alias, in the library's eyes or in SQLite's.
bool IsAlias(const Table& table, const std::string& column);

// Fills the columns of a table's layouts with what the library's CREATE parser reads, and refuses
// layouts that it cannot read or reads otherwise than SQLite does, two layouts of one width (the
// second would have no effect), a first column that cannot be carved, and a flexible_cnt that would
// merge the live layout away.
void ReadLayouts(Table& table, const std::string& file, Diagnostics& diagnostics);

}  // namespace vexaconfigc
