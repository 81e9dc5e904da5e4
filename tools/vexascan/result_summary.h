// How many rows each result table holds, and where they come from. Result rows carry no mark of
// their origin, and a search for deleted records finds live rows too; so a scan of the live rows
// alone serves as the measure, and recovered is what it does not hold, compared over whole rows.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace vexascan {

struct TableSummary {
  std::string table;
  std::int64_t rows = 0;
  std::int64_t live = 0;       // different rows that are live
  std::int64_t recovered = 0;  // different rows that are not
  std::int64_t repeated() const { return rows - live - recovered; }
};

// An empty `live_result` says that every row of `result` is live.
std::vector<TableSummary> Summarize(const std::filesystem::path& result,
                                    const std::filesystem::path& live_result);

void PrintSummary(const std::vector<TableSummary>& tables, std::ostream& out);

}  // namespace vexascan
