#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace bench {

// One table of the report. `name` is its place in a document.
struct ReportTable {
  std::string name;
  std::string title;
  std::vector<std::vector<std::string>> rows;  // the first is the head
};

// All tables that the results fill. `results` holds "machine" and "cases".
std::vector<ReportTable> MakeReport(const Json::Value& results);

std::string ToText(const ReportTable& table);
std::string ToMarkdown(const ReportTable& table);

// Puts each table between the lines "<!-- bench NAME -->" and "<!-- end NAME -->" of the document.
// Throws std::runtime_error when the document has no such place.
void WriteIntoDocument(const std::string& path, const std::vector<ReportTable>& tables);

}  // namespace bench
