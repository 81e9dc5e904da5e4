// vexaconfigc: compiles the sources of the configuration (config/README.md tells their form) into
// the database that the library reads. Ends with 0, 1 when a source was refused or the database
// could not be written, 2 on a wrong call.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "compiler.h"
#include "conflict_report.h"
#include "coverage_page.h"
#include "database_writer.h"

namespace {

// What one call is to do with the sources.
struct Orders {
  std::vector<std::string> paths;
  std::string out;
  std::string coverage;
  bool report = false;
};

int Complain(const std::string& path, const std::string& fault) {
  std::cerr << "vexaconfigc: cannot write " << path << ": " << fault << '\n';
  return 1;
}

int Compile(const Orders& orders) {
  const std::vector<std::string> files = vexaconfigc::CollectSources(orders.paths);
  if (files.empty()) {
    std::cerr << "vexaconfigc: no source file (*.yaml) in what was given\n";
    return 1;
  }
  vexaconfigc::Diagnostics diagnostics;
  const std::vector<vexaconfigc::Application> applications =
      vexaconfigc::CompileSources(files, diagnostics);
  diagnostics.Print(std::cerr);
  if (orders.report) vexaconfigc::PrintReport(applications, std::cout);
  if (diagnostics.HasErrors()) return 1;
  if (!orders.out.empty()) {
    const std::string fault = vexaconfigc::WriteDatabase(applications, orders.out);
    if (!fault.empty()) return Complain(orders.out, fault);
  }
  if (!orders.coverage.empty()) {
    const std::string fault =
        vexaconfigc::WriteTextFile(orders.coverage, vexaconfigc::CoveragePage(applications));
    if (!fault.empty()) return Complain(orders.coverage, fault);
  }
  return 0;
}

int Run(int argc, char** argv) {
  CLI::App app("Compiles the sources of the configuration into VexaConfiger.db");
  Orders orders;
  app.add_option("source", orders.paths, "Source files, or folders of *.yaml")
      ->required()
      ->check(CLI::ExistingPath);
  app.add_option("-o,--out", orders.out,
                 "The database to write; without it the sources are only checked");
  app.add_option("--coverage", orders.coverage,
                 "The page (Markdown) to write about what the sources cover");
  app.add_flag("--report", orders.report,
               "Print what each table holds and where its layouts conflict");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& fault) {
    return app.exit(fault) == 0 ? 0 : 2;
  }
  return Compile(orders);
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
