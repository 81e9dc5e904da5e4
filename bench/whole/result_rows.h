#pragma once

#include <cstdint>
#include <string>

namespace bench {

// All rows of all tables of a database in the order of their row ids, as a number that any
// difference in a value or its type changes, and how many there are.
struct ResultRows {
  uint64_t hash = 0;
  uint64_t count = 0;
};

ResultRows ReadResultRows(const std::string& path);

}  // namespace bench
