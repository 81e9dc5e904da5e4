#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "recovery/evaluate.h"

namespace recovery {

// The table of figures for people: the names of its columns, and a line for each layout.
void PrintHead(std::ostream& out);
void PrintReport(std::ostream& out, const std::vector<TableReport>& tables);

// Examples, by table.
void PrintExamples(std::ostream& out, const std::vector<TableReport>& tables, size_t most_false,
                   size_t most_missed);

// The same figures for programs.
std::string ReportAsJson(const std::vector<TableReport>& tables,
                         const std::vector<std::string>& failures);

}  // namespace recovery
