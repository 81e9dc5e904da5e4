#include "result_summary.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "sqlite_db.h"

namespace vexascan {
namespace {

std::vector<std::string> TableNames(const Database& database, const std::string& schema) {
  Statement statement = database.Prepare("select name from " + schema +
                                         ".sqlite_master where type = 'table' order by name");
  std::vector<std::string> names;
  while (statement.Step()) {
    names.push_back(statement.Text(0));
  }
  return names;
}

// "select a, b from schema.table": the columns are always those of the result.
std::string SelectAll(const std::vector<std::string>& columns, const std::string& schema,
                      const std::string& table) {
  std::string list;
  for (const std::string& column : columns) {
    list += (list.empty() ? "" : ", ") + QuoteName(column);
  }
  return "select " + list + " from " + schema + "." + QuoteName(table);
}

void CompareWithLive(const Database& database, TableSummary& summary) {
  const std::vector<std::string> live_tables = TableNames(database, "live");
  const std::vector<std::string> columns = ColumnNames(database, "main", summary.table);
  const std::string found = SelectAll(columns, "main", summary.table);
  if (std::find(live_tables.begin(), live_tables.end(), summary.table) == live_tables.end()) {
    summary.recovered =
        database.SingleInteger("select count(*) from (select distinct * from (" + found + "))");
    return;
  }
  const std::string live = SelectAll(columns, "live", summary.table);
  summary.recovered =
      database.SingleInteger("select count(*) from (" + found + " except " + live + ")");
  summary.live =
      database.SingleInteger("select count(*) from (" + found + " intersect " + live + ")");
}

void PrintLine(const TableSummary& line, std::size_t width, bool repeats, std::ostream& out) {
  out << "  " << std::left << std::setw(static_cast<int>(width)) << line.table << std::right
      << std::setw(10) << line.rows << std::setw(10) << line.live << std::setw(11)
      << line.recovered;
  if (repeats) {
    out << std::setw(10) << line.repeated();
  }
  out << "\n";
}

}  // namespace

std::vector<TableSummary> Summarize(const std::filesystem::path& result,
                                    const std::filesystem::path& live_result) {
  Database database(result);
  if (!live_result.empty()) {
    Statement attach = database.Prepare("attach ?1 as live");
    attach.Bind(1, live_result.string());
    attach.Step();
  }
  std::vector<TableSummary> tables;
  for (const std::string& table : TableNames(database, "main")) {
    TableSummary summary{.table = table};
    summary.rows = database.SingleInteger("select count(*) from main." + QuoteName(table));
    if (live_result.empty()) {
      summary.live = summary.rows;
    } else {
      CompareWithLive(database, summary);
    }
    tables.push_back(summary);
  }
  return tables;
}

void PrintSummary(const std::vector<TableSummary>& tables, std::ostream& out) {
  if (tables.empty()) {
    out << "The result holds no tables: the source has none that the configuration knows.\n";
    return;
  }
  TableSummary total{.table = "total"};
  std::size_t width = total.table.size();
  for (const TableSummary& line : tables) {
    width = std::max(width, line.table.size());
    total.rows += line.rows;
    total.live += line.live;
    total.recovered += line.recovered;
  }
  const bool repeats = total.repeated() > 0;
  out << "  " << std::left << std::setw(static_cast<int>(width)) << "table" << std::right
      << std::setw(10) << "rows" << std::setw(10) << "live" << std::setw(11) << "recovered"
      << (repeats ? "  repeated" : "") << "\n";
  for (const TableSummary& line : tables) {
    PrintLine(line, width, repeats, out);
  }
  PrintLine(total, width, repeats, out);
}

}  // namespace vexascan
