#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "recovery/evidence.h"
#include "recovery/record_bytes.h"

namespace recovery {

// A record to look for.
struct Wanted {
  RecordBytes record;
  bool also_in_use = false;  // bytes of cells that are in use count as well
};

// How a record was found in the bytes.
struct Standing {
  bool found = false;
  bool overflows = false;
  bool in_main = false;  // cell and chain stand in the database alone
};

// Looks for records' serial types and bodies in all bytes of the evidence, in one pass for all of
// them. A record with overflow pages stands only if its whole chain can be followed, each page in
// any of its states. `used` are the bytes of cells in use, for each file in order.
std::vector<Standing> FindStanding(const Evidence& evidence, const std::vector<Wanted>& wanted,
                                   const std::vector<std::vector<Span>>& used);

}  // namespace recovery
