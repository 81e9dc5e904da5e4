#pragma once

#include <json/value.h>

#include <optional>

#include "whole/single_run.h"

namespace bench {

// Runs the measurement in a child process; nothing when that fails, with a line on stderr.
std::optional<Json::Value> RunInChild(const RunRequest& request);

// Instructions of one pass, counted by callgrind; nothing where it is not installed or fails.
std::optional<double> CountInstructions(const RunRequest& request);

}  // namespace bench
