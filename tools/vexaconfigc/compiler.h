#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// The source files that the given files and folders stand for, in the order of their paths; a
// folder stands for every *.yaml below it.
std::vector<std::string> CollectSources(const std::vector<std::string>& paths);

// Reads and checks all sources. What comes back is fit to be written only when `diagnostics` holds
// no error.
std::vector<Application> CompileSources(const std::vector<std::string>& files,
                                        Diagnostics& diagnostics);

}  // namespace vexaconfigc
