#pragma once

#include <optional>
#include <string>

#include "diagnostics.h"
#include "source_model.h"

namespace vexaconfigc {

// Reads one source file. Everything that can be judged key by key is judged here: unknown and
// missing keys, values of the wrong form, system and data type names. Nothing when the text is no
// YAML at all; a file with other faults is returned as far as it could be read.
std::optional<Application> ParseSource(const std::string& file, Diagnostics& diagnostics);

}  // namespace vexaconfigc
