#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "data/sample_table.h"

namespace bench {

// Writes a configuration for the tables. Beside the live layout each table has the layouts of
// `other_widths` columns.
void WriteSampleConfig(const std::string& path, const std::vector<Table>& tables,
                       const std::vector<size_t>& other_widths);

}  // namespace bench
