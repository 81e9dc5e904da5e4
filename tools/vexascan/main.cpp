// vexascan: the words of the command line.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <exception>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "demo_command.h"
#include "exit_code.h"
#include "list_command.h"
#include "scan_command.h"
#include "scan_request.h"

namespace vexascan {
namespace {

constexpr const char* kScanFooter = R"(The source is never written to: the scan works on copies in
a fresh folder that it removes at the end. RESULT.db gets one table for each table of the source
that the configuration knows. An earlier result is replaced when the scan comes to its end.

Exit codes: 0 the scan ran to its end, 1 it failed or was cut, 2 the request cannot be carried out.

Example: vexascan scan --system android --app sms --source mmssms.db --out found.db)";

constexpr const char* kDemoFooter = R"(Makes a message database of an Android phone, deletes
messages in it in three ways, scans it and shows what came back. Exit code 1 when fewer than 90 of
100 messages whose bytes still stand came back.)";

constexpr const char* kFooter = R"(Start with: vexascan demo)";

// The texts of the command line as they stand there.
struct ScanWords {
  std::string params;
  std::string system;
  std::string app;
  std::string source;
  std::string out;
  std::string range = "all";
  std::optional<int> os_version;
  std::string config;
  std::string log_dir;
  std::string temp;
};

template <typename Names>
std::vector<std::string> ListOf(const Names& names) {
  return {names.begin(), names.end()};
}

template <typename Names>
int NumberOf(const Names& names, const std::string& name) {
  return static_cast<int>(
      std::distance(names.begin(), std::find(names.begin(), names.end(), name)));
}

ScanRequest RequestOf(const ScanWords& words) {
  ScanRequest request;
  if (!words.params.empty()) {
    request = ReadParameterFile(words.params);
  } else {
    request.system_type = NumberOf(kSystemNames, words.system);
    request.data_type = NumberOf(kApplicationNames, words.app);
    request.system_version = words.os_version;
    request.range = static_cast<Range>(NumberOf(kRangeNames, words.range));
    request.source = words.source;
    request.result = words.out;
    request.temp_folder = words.temp;
  }
  request.config_folder = words.config;
  request.log_folder = words.log_dir;
  return request;
}

CLI::App* AddScan(CLI::App& app, ScanWords& words) {
  CLI::App* scan = app.add_subcommand("scan", "Recover live and deleted records of one database");
  scan->footer(kScanFooter);
  CLI::Option* params =
      scan->add_option("--params", words.params,
                       "Take the request from a JSON file with the library's keys: system_type, "
                       "data_type, system_version, scan_range_type, source_db_path, dest_db_path, "
                       "temp_folder");
  params->type_name("FILE");
  std::vector<CLI::Option*> single;
  const auto add = [&](const char* name, auto& target, const char* type, const char* help) {
    CLI::Option* option = scan->add_option(name, target, help);
    option->type_name(type);
    single.push_back(option);
    return option;
  };
  add("--system", words.system, "NAME", "The phone's system")
      ->check(CLI::IsMember(ListOf(kSystemNames)));
  add("--app", words.app, "NAME", "The application that the database belongs to")
      ->check(CLI::IsMember(ListOf(kApplicationNames)));
  add("--source", words.source, "FILE", "The database; its log is looked for at FILE-wal");
  add("--out", words.out, "RESULT.db", "The result database");
  add("--range", words.range, "NAME", "What to look for (default all)")
      ->check(CLI::IsMember(ListOf(kRangeNames)));
  add("--os-version", words.os_version, "N",
      "Major version of the phone's system (default: try the layouts of all)")
      ->check(CLI::Range(0, std::numeric_limits<int>::max()));
  add("--temp", words.temp, "DIR", "Where working copies are made (default: the system's folder)");
  for (CLI::Option* option : single) {
    params->excludes(option);
  }
  scan->add_option("--config", words.config, "Folder of VexaConfiger.db (default: the shipped one)")
      ->type_name("DIR");
  scan->add_option("--log-dir", words.log_dir, "Folder of the log file (default: the result's)")
      ->type_name("DIR");
  return scan;
}

void RequireWords(const ScanWords& words) {
  if (!words.params.empty()) {
    return;
  }
  for (const auto& [name, value] :
       {std::pair<const char*, const std::string&>{"--system", words.system},
        {"--app", words.app},
        {"--source", words.source},
        {"--out", words.out}}) {
    if (value.empty()) {
      throw UsageError(std::string(name) + " is missing; see vexascan scan --help.");
    }
  }
}

CLI::App* AddDemo(CLI::App& app, DemoRequest& request) {
  CLI::App* demo = app.add_subcommand("demo", "Show what a scan brings back, on a built-in sample");
  demo->footer(kDemoFooter);
  demo->add_option("--out", request.folder, "Folder for sample, result and log")
      ->type_name("DIR")
      ->capture_default_str();
  demo->add_option("--config", request.config_folder,
                   "Folder of VexaConfiger.db (default: the shipped one)")
      ->type_name("DIR");
  demo->add_option("--temp", request.temp_folder,
                   "Where working copies are made (default: the system's folder)")
      ->type_name("DIR");
  return demo;
}

constexpr const char* kListFooter = R"(For each application: its database on the phone, the tables
that are read, and what is known and left out. --json adds the number of known layouts, the columns
that tell records apart, and the limits and reasons in full.)";

CLI::App* AddList(CLI::App& app, ListRequest& request) {
  CLI::App* list = app.add_subcommand("list", "Show which applications and tables are covered");
  list->footer(kListFooter);
  list->add_option("--system", request.system, "Only this system")
      ->type_name("NAME")
      ->check(CLI::IsMember(ListOf(kSystemNames)));
  list->add_option("--data-type,--app", request.data_type, "Only this data type")
      ->type_name("NAME")
      ->check(CLI::IsMember(ListOf(kApplicationNames)));
  list->add_flag("--json", request.as_json, "Print a JSON list");
  list->add_option("--config", request.config_folder,
                   "Folder of VexaConfiger.db (default: the shipped one)")
      ->type_name("DIR");
  return list;
}

int Main(int argc, char** argv) {
  CLI::App app{"vexascan: brings back records from SQLite databases of phones, deleted ones too"};
  app.set_version_flag("--version", "vexascan " VEXASCAN_VERSION);
  app.footer(kFooter);
  app.require_subcommand(0, 1);  // with none, an unknown word is named in the error
  ScanWords words;
  DemoRequest demo_request;
  ListRequest list_request;
  const CLI::App* scan = AddScan(app, words);
  const CLI::App* demo = AddDemo(app, demo_request);
  const CLI::App* list = AddList(app, list_request);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitSuccess : kExitUsage;
  }
  if (scan->parsed()) {
    RequireWords(words);
    return RunScan(RequestOf(words), std::cout);
  }
  if (demo->parsed()) {
    return RunDemo(demo_request, std::cout);
  }
  if (list->parsed()) {
    return RunList(list_request, std::cout);
  }
  std::cerr << app.help();
  return kExitUsage;
}

}  // namespace
}  // namespace vexascan

int main(int argc, char** argv) {
  try {
    return vexascan::Main(argc, argv);
  } catch (const vexascan::UsageError& error) {
    std::cerr << "vexascan: " << error.what() << "\n";
    return vexascan::kExitUsage;
  } catch (const std::exception& error) {
    std::cerr << "vexascan: " << error.what() << "\n";
    return vexascan::kExitScanFailed;
  }
}
