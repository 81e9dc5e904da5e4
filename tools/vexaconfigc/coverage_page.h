#pragma once

#include <string>
#include <vector>

#include "source_model.h"

namespace vexaconfigc {

// The page for people (Markdown) that tells what the sources cover and what they do not. The same
// sources give the same page, whatever their order.
std::string CoveragePage(std::vector<Application> applications);

// Writes a file anew. Returns what went wrong in words, or the empty text.
std::string WriteTextFile(const std::string& path, const std::string& text);

}  // namespace vexaconfigc
