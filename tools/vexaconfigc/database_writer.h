#pragma once

#include <string>
#include <vector>

#include "source_model.h"

namespace vexaconfigc {

// Writes the configuration database. The applications come in the order of their codes, tables and
// columns in the order of their files, so that one set of sources gives one file to the byte. The
// database is made beside its place and moved there when whole; side files that an earlier database
// of that name left behind are removed, since SQLite would replay them into the new one.
// Returns what went wrong in words, or the empty text.
std::string WriteDatabase(std::vector<Application> applications, const std::string& path);

}  // namespace vexaconfigc
