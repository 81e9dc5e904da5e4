#include "recovery/report.h"

#include <json/json.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>

namespace recovery {
namespace {

constexpr const char* kLine =
    "%-8s %-13s %-22s %-24s %4zu %9s %6.3f %7zu %7zu %6.3f %7zu %6zu %6.3f %6zu %6zu %9s  %s\n";
constexpr const char* kHead =
    "%-8s %-13s %-22s %-24s %4s %9s %6s %7s %7s %6s %7s %6s %6s %6s %6s %9s  %s\n";

// Bytes that continue a letter take no place on the screen, so texts are cut and not padded.
std::string Cut(const std::string& text, size_t most) {
  return text.size() <= most ? text : text.substr(0, most - 1) + "~";
}

std::string Part(size_t part, size_t whole) {
  return std::to_string(part) + '/' + std::to_string(whole);
}

std::string Note(const TableReport& table) {
  std::string note = table.label;
  if (!table.covered) return note + " [not configured]";
  if (table.without_table > 0) {
    note += " [no result table in " + std::to_string(table.without_table) + " of " +
            std::to_string(table.databases) + "]";
  }
  return note;
}

Json::Value AsJson(const Counts& counts) {
  Json::Value value;
  value["live"] = Json::UInt64(counts.live);
  value["live_found"] = Json::UInt64(counts.live_found);
  value["surviving"] = Json::UInt64(counts.standing);
  value["recovered"] = Json::UInt64(counts.recovered);
  value["recall"] = counts.Recall();
  value["former_states"] = Json::UInt64(counts.former);
  value["former_states_found"] = Json::UInt64(counts.former_found);
  value["rows_beyond_live"] = Json::UInt64(counts.carved);
  value["false_rows"] = Json::UInt64(counts.false_rows);
  value["precision"] = counts.Precision();
  value["repeats"] = Json::UInt64(counts.repeats);
  value["missed_with_overflow"] = Json::UInt64(counts.missed_overflow);
  value["missed_in_log"] = Json::UInt64(counts.missed_log);
  return value;
}

}  // namespace

void PrintHead(std::ostream& out) {
  std::array<char, 512> line{};
  std::snprintf(line.data(), line.size(), kHead, "system", "data type", "database", "table", "cols",
                "live", "found", "surviv", "recov", "recall", "beyond", "false", "precis", "repeat",
                "clean+", "former", "layout");
  out << line.data();
}

void PrintReport(std::ostream& out, const std::vector<TableReport>& tables) {
  std::array<char, 512> line{};
  for (const TableReport& table : tables) {
    Counts all = table.clean;
    all.Add(table.mixed);
    const Counts& mixed = table.mixed;
    std::snprintf(line.data(), line.size(), kLine, table.system.c_str(), table.data_type.c_str(),
                  Cut(table.database, 22).c_str(), Cut(table.table, 24).c_str(), table.columns,
                  std::to_string(all.live).c_str(), all.LiveShare(), mixed.standing,
                  mixed.recovered, mixed.Recall(), mixed.carved, mixed.false_rows,
                  mixed.Precision(), mixed.repeats, table.clean.carved,
                  Part(mixed.former_found, mixed.former).c_str(), Cut(Note(table), 120).c_str());
    out << line.data();
  }
}

void PrintExamples(std::ostream& out, const std::vector<TableReport>& tables, size_t most_false,
                   size_t most_missed) {
  for (const TableReport& table : tables) {
    const std::string name =
        table.Name() + " " + std::to_string(table.columns) + " columns, " + table.label;
    const auto print = [&](const char* what, const std::vector<std::string>& texts, size_t most) {
      for (size_t i = 0; i < std::min(most, texts.size()); ++i) {
        out << what << " " << name << "\n    " << texts[i] << '\n';
      }
    };
    print("false ", table.examples.false_rows, most_false);
    print("missed", table.examples.missed, most_missed);
  }
}

std::string ReportAsJson(const std::vector<TableReport>& tables,
                         const std::vector<std::string>& failures) {
  Json::Value root;
  root["tables"] = Json::Value(Json::arrayValue);
  root["failures"] = Json::Value(Json::arrayValue);
  for (const std::string& failure : failures) root["failures"].append(failure);
  for (const TableReport& table : tables) {
    Json::Value value;
    value["system"] = table.system;
    value["data_type"] = table.data_type;
    value["database"] = table.database;
    value["table"] = table.table;
    value["layout"] = table.label;
    value["columns"] = Json::UInt64(table.columns);
    value["system_version"] = table.system_version;
    value["configured"] = table.covered;
    value["databases"] = Json::UInt64(table.databases);
    value["results_without_table"] = Json::UInt64(table.without_table);
    value["clean"] = AsJson(table.clean);
    value["mixed"] = AsJson(table.mixed);
    root["tables"].append(value);
  }
  return Json::writeString(Json::StreamWriterBuilder(), root);
}

}  // namespace recovery
