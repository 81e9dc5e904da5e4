#include "whole/report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "whole/floors.h"

namespace bench {

namespace {

std::string Number(double number, int digits) {
  char text[48];
  std::snprintf(text, sizeof text, "%.*f", digits, number);
  return text;
}

std::string Speed(const Json::Value& value) {
  if (!value.isObject()) return "-";
  const double speed = value["mb_per_second"].asDouble();
  return Number(speed, speed < 100 ? 1 : 0);
}

std::string Milliseconds(const Json::Value& value) {
  return value.isObject() ? Number(value["seconds"].asDouble() * 1e3, 1) : "-";
}

std::string Times(const Json::Value& slow, const Json::Value& fast) {
  if (!slow.isObject() || !fast.isObject()) return "-";
  return Number(slow["mb_per_second"].asDouble() == 0
                    ? 0
                    : fast["mb_per_second"].asDouble() / slow["mb_per_second"].asDouble(),
                1);
}

ReportTable MachineTable(const Json::Value& machine) {
  ReportTable table{"machine", "Where and when", {{"measured", ""}}};
  for (const char* key :
       {"date", "processor", "compiler", "sqlite", "revision", "megabytes", "repeats"}) {
    table.rows.push_back({key, machine[key].asString()});
  }
  return table;
}

const std::vector<std::string>& WalkCases() {
  static const std::vector<std::string> names = {"sms", "wide", "noise", "log", "apps"};
  return names;
}

// MB/s of the main file, or of the log, by case.
ReportTable WalkTable(const Json::Value& cases) {
  ReportTable table{"walk", "MB/s of source, all layouts together", {{"case"}}};
  const std::vector<std::string> columns = {
      "plain-walk", "sieve-words", "sieve-ssse3", "sieve-avx2", "walk-words", "walk-ssse3",
      "walk-avx2",  "full-words",  "full-ssse3",  "full-avx2",  "read"};
  for (const std::string& column : columns) table.rows[0].push_back(column);
  table.rows[0].emplace_back("full / plain");
  const auto add = [&](const std::string& label, const Json::Value& values,
                       const std::string& prefix) {
    std::vector<std::string> row = {label};
    for (const std::string& column : columns) row.push_back(Speed(values[prefix + column]));
    row.push_back(Times(values[prefix + "plain-walk"], values[prefix + "full-avx2"]));
    table.rows.push_back(row);
  };
  for (const std::string& name : WalkCases()) {
    if (!cases.isMember(name)) continue;
    add(name == "log" ? "log, main file" : name, cases[name], "");
    if (name == "log") add("log, frames", cases[name], "log-");
  }
  return table;
}

ReportTable ScanTable(const Json::Value& cases) {
  ReportTable table{
      "scan",
      "Whole scans, milliseconds of processor time",
      {{"case", "MB", "rows", "plain scan", "scan", "times", "live only", "deleted only",
        "copy of live rows", "INSERT ... SELECT", ".recover", "peak MiB"}}};
  for (const char* name : {"sms", "wide", "noise", "log", "apps", "million", "gib"}) {
    if (!cases.isMember(name)) continue;
    const Json::Value& values = cases[name];
    const Json::Value& scan = values["scan"];
    table.rows.push_back({name, Number(scan["bytes"].asDouble() / 1e6, 0), scan["rows"].asString(),
                          Milliseconds(values["plain-scan"]), Milliseconds(scan),
                          Times(values["plain-scan"], scan), Milliseconds(values["scan-live"]),
                          Milliseconds(values["scan-deleted"]), Milliseconds(values["copy"]),
                          Milliseconds(values["attach"]), Milliseconds(values["recover"]),
                          Number(scan["rss_kb"].asDouble() / 1024, 1)});
  }
  return table;
}

// A whole scan in its parts: what the ranges and the walks by themselves take.
ReportTable PhaseTable(const Json::Value& cases) {
  ReportTable table{"phases",
                    "Parts of a whole scan, in 100",
                    {{"case", "prepare, copy the source", "live rows", "sweep and headers",
                      "rest of the full test", "carved rows into the result"}}};
  for (const char* name : {"sms", "wide", "noise", "apps", "million", "gib"}) {
    if (!cases.isMember(name)) continue;
    const Json::Value& values = cases[name];
    const auto seconds = [&](const char* key) { return values[key]["seconds"].asDouble(); };
    const char* walk_key = values.isMember("walk") ? "walk" : "walk-avx2";
    const char* full_key = values.isMember("full") ? "full" : "full-avx2";
    const double whole = seconds("scan");
    const double prepare = values["scan"]["prepare_seconds"].asDouble();
    const double live = seconds("scan-live") - prepare;
    const double rest = whole - prepare - live - seconds(full_key);
    std::vector<std::string> row = {name};
    for (const double part :
         {prepare, live, seconds(walk_key), seconds(full_key) - seconds(walk_key), rest}) {
      row.push_back(Number(100 * part / whole, 1));
    }
    table.rows.push_back(row);
  }
  return table;
}

ReportTable ScalingTable(const Json::Value& cases) {
  ReportTable table{"scaling",
                    "More layouts and tables, milliseconds",
                    {{"what", "sieve", "sieve and headers", "walk and full test"}}};
  for (const char* name : {"sms", "apps"}) {
    if (!cases.isMember(name)) continue;
    const std::string unit = name == std::string("sms") ? " layouts" : " tables";
    for (const char* count : {"1", "2", "3", "10"}) {
      const std::string prefix = std::string("of-") + count + "-";
      table.rows.push_back({count + unit, Milliseconds(cases[name][prefix + "sieve"]),
                            Milliseconds(cases[name][prefix + "walk"]),
                            Milliseconds(cases[name][prefix + "full"])});
    }
  }
  return table;
}

ReportTable SizeTable(const Json::Value& cases) {
  ReportTable table{"sizes",
                    "Growing sources of messages, MB/s",
                    {{"MB", "sieve and headers", "walk and full test", "whole scan", "peak MiB"}}};
  const Json::Value& sizes = cases["sizes"];
  std::vector<uint64_t> all;
  for (const std::string& key : sizes.getMemberNames()) {
    if (key.ends_with("-scan")) all.push_back(std::stoull(key));
  }
  std::sort(all.begin(), all.end());
  for (const uint64_t size : all) {
    const std::string prefix = std::to_string(size) + "-";
    table.rows.push_back({std::to_string(size), Speed(sizes[prefix + "walk"]),
                          Speed(sizes[prefix + "full"]), Speed(sizes[prefix + "scan"]),
                          Number(sizes[prefix + "scan"]["rss_kb"].asDouble() / 1024, 1)});
  }
  return table;
}

// Places are different positions: a record of a wide layout is often one of a narrow layout's
// survivors as well.
ReportTable SurvivorTable(const Json::Value& cases) {
  ReportTable table{
      "survivors",
      "What is left of the positions, and instructions per byte",
      {{"case", "million positions", "sieved, all layouts", "places sieved",
        "places with a fitting header", "places of records", "places sieved / records",
        "instr/B sieve", "instr/B sieve and headers", "instr/B walk and full test"}}};
  for (const char* name : {"sms", "wide", "noise", "apps"}) {
    if (!cases.isMember(name)) continue;
    const Json::Value& values = cases[name];
    const Json::Value& walk = values["walk-avx2"];
    const double records = values["plain-walk"]["record_places"].asDouble();
    std::vector<std::string> row = {
        name,
        Number(walk["bytes"].asDouble() / 1e6, 0),
        walk["sieved"].asString(),
        walk["sieved_places"].asString(),
        walk["survivor_places"].asString(),
        Number(records, 0),
        Number(walk["sieved_places"].asDouble() / std::max(records, 1.0), 3)};
    for (const char* kind : {"sieve", "walk", "full"}) {
      const Json::Value& count = values["instructions"][kind];
      row.push_back(count.isNull() ? "-" : Number(count.asDouble(), 2));
    }
    table.rows.push_back(row);
  }
  return table;
}

}  // namespace

std::vector<ReportTable> MakeReport(const Json::Value& results) {
  const Json::Value& cases = results["cases"];
  return {MachineTable(results["machine"]),
          MakeFloors(cases),
          WalkTable(cases),
          ScanTable(cases),
          PhaseTable(cases),
          ScalingTable(cases),
          SizeTable(cases),
          SurvivorTable(cases)};
}

std::string ToText(const ReportTable& table) {
  std::vector<size_t> widths(table.rows.front().size());
  for (const auto& row : table.rows) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text = "\n" + table.title + "\n";
  for (const auto& row : table.rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      text += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
    }
    text += "\n";
  }
  return text;
}

std::string ToMarkdown(const ReportTable& table) {
  std::string text;
  for (size_t i = 0; i < table.rows.size(); ++i) {
    text += "|";
    for (const std::string& cell : table.rows[i]) text += " " + cell + " |";
    text += "\n";
    if (i != 0) continue;
    text += "|";
    for (size_t column = 0; column < table.rows[0].size(); ++column) text += " --- |";
    text += "\n";
  }
  return text;
}

void WriteIntoDocument(const std::string& path, const std::vector<ReportTable>& tables) {
  std::ifstream in(path);
  std::string document((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  for (const ReportTable& table : tables) {
    const std::string begin = "<!-- bench " + table.name + " -->\n";
    const std::string end = "<!-- end " + table.name + " -->";
    const size_t from = document.find(begin);
    const size_t to = document.find(end);
    if (from == std::string::npos || to == std::string::npos || to < from) {
      throw std::runtime_error(path + " has no place for the table " + table.name);
    }
    document.replace(from + begin.size(), to - from - begin.size(), ToMarkdown(table));
  }
  std::ofstream(path) << document;
}

}  // namespace bench
