// vexaconfigc: compiles the sources of the configuration (config/README.md tells their form) into
// the database that the library reads. Ends with 0, 1 when a source was refused or the database
// could not be written, 2 on a wrong call.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "compiler.h"
#include "database_writer.h"
#include "position_check.h"

namespace {

void PrintReport(const std::vector<vexaconfigc::Application>& applications) {
  for (const vexaconfigc::Application& application : applications) {
    std::cout << application.system << '/' << application.data_type << " (" << application.database
              << ")\n";
    for (const vexaconfigc::Table& table : application.tables) {
      std::cout << "  " << table.name << ": " << table.results.size() << " result columns, "
                << table.features.size() << " features,";
      for (const vexaconfigc::Layout& layout : table.layouts) {
        std::cout << ' ' << layout.columns.size() << (layout.live_only ? "(live only)" : "");
      }
      std::cout << " columns" << (table.scan.deleted ? "" : ", live rows only") << '\n';
      for (const std::string& line : vexaconfigc::DescribeConflicts(table)) {
        std::cout << "    " << line << '\n';
      }
    }
  }
}

int Compile(const std::vector<std::string>& paths, const std::string& out, bool report) {
  const std::vector<std::string> files = vexaconfigc::CollectSources(paths);
  if (files.empty()) {
    std::cerr << "vexaconfigc: no source file (*.yaml) in what was given\n";
    return 1;
  }
  vexaconfigc::Diagnostics diagnostics;
  std::vector<vexaconfigc::Application> applications =
      vexaconfigc::CompileSources(files, diagnostics);
  diagnostics.Print(std::cerr);
  if (report) PrintReport(applications);
  if (diagnostics.HasErrors()) return 1;
  if (out.empty()) return 0;
  const std::string fault = vexaconfigc::WriteDatabase(std::move(applications), out);
  if (fault.empty()) return 0;
  std::cerr << "vexaconfigc: cannot write " << out << ": " << fault << '\n';
  return 1;
}

int Run(int argc, char** argv) {
  CLI::App app("Compiles the sources of the configuration into VexaConfiger.db");
  std::vector<std::string> paths;
  std::string out;
  bool report = false;
  app.add_option("source", paths, "Source files, or folders of *.yaml")
      ->required()
      ->check(CLI::ExistingPath);
  app.add_option("-o,--out", out, "The database to write; without it the sources are only checked");
  app.add_flag("--report", report, "Print what each table holds and where its layouts conflict");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& fault) {
    return app.exit(fault) == 0 ? 0 : 2;
  }
  return Compile(paths, out, report);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "vexaconfigc: %s\n", fault.what());
    return 1;
  }
}
