// Measures whole scans and their walks; ./dev bench runs it.

#include <json/reader.h>
#include <json/writer.h>
#include <sqlite3.h>

#include <CLI/CLI.hpp>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>

#include "data/sample_case.h"
#include "whole/campaign.h"
#include "whole/report.h"
#include "whole/single_run.h"

namespace {

std::string ProcessorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

std::string Today() {
  char text[32];
  const std::time_t now = std::time(nullptr);
  std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&now));
  return text;
}

Json::Value DescribeMachine(const bench::Options& options, const std::string& revision) {
  Json::Value machine;
  machine["date"] = Today();
  machine["processor"] = ProcessorName();
#if defined(__clang__)
  machine["compiler"] = "clang " __clang_version__;
#else
  machine["compiler"] = "g++ " __VERSION__;
#endif
  machine["sqlite"] = sqlite3_libversion();
  machine["revision"] = revision;
  machine["megabytes"] = Json::UInt64{options.megabytes};
  machine["repeats"] = options.repeats;
  return machine;
}

struct Arguments {
  bench::Options options;
  bench::RunRequest single;
  std::string revision = "unknown";
  std::string json;
  std::string from_json;
  std::string markdown;
};

void Describe(CLI::App& app, Arguments& arguments) {
  bench::Options& options = arguments.options;
  app.add_option("--data", options.data, "folder of the sources, which are kept")
      ->default_val("bench-data");
  app.add_option("--megabytes", options.megabytes, "size of a source")->check(CLI::Range(1, 2048));
  app.add_option("--repeats", options.repeats, "runs of each measurement")
      ->check(CLI::Range(1, 99));
  app.add_option("--case", options.cases, "only these cases")
      ->check(CLI::IsMember(bench::CaseNames()));
  app.add_flag("--quick", options.is_quick, "no large sources, no instruction counts");
  app.add_option("--revision", arguments.revision, "revision to state");
  app.add_option("--json", arguments.json, "file for the results")->take_last();
  app.add_option("--from-json", arguments.from_json, "report on earlier results, measure nothing");
  app.add_option("--markdown", arguments.markdown, "document whose tables to replace");
  bench::RunRequest& single = arguments.single;
  app.add_option("--run", single.kind, "one measurement in this process")->group("");
  app.add_option("--folder", single.folder)->group("");
  app.add_option("--variant", single.variant)->group("");
  app.add_option("--level", single.level)->group("");
  app.add_option("--scratch", single.scratch)->group("");
  app.add_flag("--log", single.of_log)->group("");
  app.add_flag("--counted", single.is_counted)->group("");
}

int Report(const Json::Value& results, const Arguments& arguments) {
  const std::vector<bench::ReportTable> tables = bench::MakeReport(results);
  for (const bench::ReportTable& table : tables) std::cout << bench::ToText(table);
  if (!arguments.json.empty()) std::ofstream(arguments.json) << results.toStyledString();
  if (!arguments.markdown.empty()) bench::WriteIntoDocument(arguments.markdown, tables);
  return results["rows_are_equal"].asBool() ? 0 : 1;
}

int Run(const Arguments& arguments) {
  if (!arguments.single.kind.empty()) {
    std::cout << bench::RunSingle(arguments.single).toStyledString();
    return 0;
  }
  Json::Value results;
  if (!arguments.from_json.empty()) {
    std::ifstream(arguments.from_json) >> results;
    return Report(results, arguments);
  }
  bench::Campaign campaign(arguments.options);
  results["machine"] = DescribeMachine(arguments.options, arguments.revision);
  results["cases"] = campaign.Run();
  results["rows_are_equal"] = campaign.rows_are_equal();
  return Report(results, arguments);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    CLI::App app("Benchmarks of whole scans");
    Arguments arguments;
    Describe(app, arguments);
    CLI11_PARSE(app, argc, argv);
    return Run(arguments);
  } catch (const std::exception& error) {
    std::cerr << "whole_bench: " << error.what() << "\n";
    return 2;
  }
}
