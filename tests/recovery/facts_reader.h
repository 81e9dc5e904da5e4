#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "recovery/facts.h"

namespace recovery {

// A fault in a facts file; the message begins with "file:line: ".
class FactsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads one file. Throws FactsError.
Facts ReadFacts(const std::string& path);

// The facts files below a folder, <system>/<data type>.yaml, in order.
std::vector<std::string> FactsFiles(const std::string& folder);

}  // namespace recovery
