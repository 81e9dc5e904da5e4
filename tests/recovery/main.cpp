// recovery: how many records the library recovers from made-up databases of every application, and
// how many it invents.
#include <json/json.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "recovery/evaluate.h"
#include "recovery/facts_reader.h"
#include "recovery/floors.h"
#include "recovery/jobs.h"
#include "recovery/report.h"
#include "recovery/scenario.h"

namespace {

struct Options {
  std::string config;
  std::string facts;
  std::vector<std::string> only;
  std::string seeds = "tune";
  std::string json;
  std::string floors;
  std::string work;
  size_t jobs = 1;
  size_t show_false = 0;
  size_t show_missed = 0;
  recovery::EvaluateSettings settings;
};

void AddOptions(CLI::App& app, Options& options) {
  app.add_option("--config", options.config, "VexaConfiger.db")
      ->required()
      ->check(CLI::ExistingFile);
  app.add_option("--facts", options.facts, "Folder of the facts of applications")
      ->required()
      ->check(CLI::ExistingDirectory);
  app.add_option("--only", options.only, "Applications, such as ios/sms,android/note")
      ->delimiter(',');
  app.add_option("--table", options.settings.table, "Compare this table only");
  app.add_option("--rows", options.settings.rows, "Rows of the busiest table")
      ->capture_default_str();
  app.add_option("--seeds", options.seeds, "tune, held-out or numbers with commas between them")
      ->capture_default_str();
  app.add_option("--scenarios", options.settings.scenarios, "Only these kinds of life")
      ->delimiter(',')
      ->check(CLI::IsMember(
          std::vector<std::string>(recovery::kScenarios.begin(), recovery::kScenarios.end())));
  app.add_flag("--thorough", options.settings.thorough, "Every kind of life in every layout");
  app.add_option("--jobs", options.jobs, "Applications at a time")->capture_default_str();
  app.add_option("--json", options.json, "Write the figures to this file as well");
  app.add_option("--suggest-floors", options.floors,
                 "Write the entries that floors.yaml would need, without their reasons");
  app.add_option("--show-false", options.show_false, "Examples of false rows for each table");
  app.add_option("--show-missed", options.show_missed, "Examples of missed rows for each table");
  app.add_option("--work", options.work, "Folder for databases and results, emptied at the end");
}

std::vector<uint64_t> Seeds(const std::string& text) {
  if (text == "tune") return recovery::TuneSeeds();
  if (text == "held-out") return recovery::HeldOutSeeds();
  std::vector<uint64_t> seeds;
  std::istringstream numbers(text);
  for (std::string number; std::getline(numbers, number, ',');) {
    seeds.push_back(std::stoull(number));
  }
  return seeds;
}

std::string NameOf(const std::string& file) {
  const std::filesystem::path path(file);
  return path.parent_path().filename().string() + '/' + path.stem().string();
}

// Where a job leaves what it has found for the run as a whole.
std::string LeftAt(const Options& options, size_t index, const std::string& ending) {
  return options.settings.folder + '/' + std::to_string(index) + ending;
}

// One application, from its facts to the figures.
bool RunOne(const std::string& file, size_t index, const Options& options) {
  recovery::Evaluation evaluation;
  try {
    recovery::EvaluateSettings settings = options.settings;
    settings.folder = LeftAt(options, index, "");
    evaluation = recovery::Evaluate(recovery::ReadFacts(file), settings);
    std::filesystem::remove_all(settings.folder);
  } catch (const std::exception& fault) {
    evaluation.failures.emplace_back(fault.what());
  }
  std::ofstream text(LeftAt(options, index, ".txt"));
  recovery::PrintReport(text, evaluation.tables);
  recovery::PrintExamples(text, evaluation.tables, options.show_false, options.show_missed);
  for (const std::string& failure : evaluation.failures) text << "FAILED " << failure << '\n';
  std::ofstream(LeftAt(options, index, ".floors")) << recovery::SuggestedFloors(evaluation.tables);
  std::ofstream(LeftAt(options, index, ".json"))
      << recovery::ReportAsJson(evaluation.tables, evaluation.failures);
  return evaluation.failures.empty();
}

Json::Value ReadJson(const std::string& path) {
  Json::Value value;
  std::ifstream(path) >> value;
  return value;
}

// The figures of all applications, in the order of their names.
void WriteJson(const Options& options, size_t count) {
  Json::Value all;
  for (const char* part : {"tables", "failures"}) {
    all[part] = Json::Value(Json::arrayValue);
    for (size_t i = 0; i < count; ++i) {
      if (!std::filesystem::exists(LeftAt(options, i, ".json"))) continue;
      const Json::Value one = ReadJson(LeftAt(options, i, ".json"));
      for (const Json::Value& item : one[part]) {
        all[part].append(item);
      }
    }
  }
  std::ofstream(options.json) << all << '\n';
}

void WriteFloors(const Options& options, size_t count) {
  std::ofstream out(options.floors);
  for (size_t i = 0; i < count; ++i) {
    std::ifstream(LeftAt(options, i, ".floors")) >> std::noskipws >> out.rdbuf();
    out.clear();
  }
}

// Figures are printed application by application, as a whole run takes minutes.
int Run(const Options& options) {
  std::vector<std::string> files = recovery::FactsFiles(options.facts);
  std::erase_if(files, [&](const std::string& file) {
    return !options.only.empty() &&
           std::ranges::find(options.only, NameOf(file)) == options.only.end();
  });
  bool good = !files.empty();
  recovery::PrintHead(std::cout);
  recovery::RunJobs(
      files.size(), options.jobs,
      [&](size_t index) { return RunOne(files[index], index, options); },
      [&](size_t index, bool job_good) {
        good = good && job_good;
        const std::string path = LeftAt(options, index, ".txt");
        if (!std::filesystem::exists(path)) std::cout << "FAILED " << NameOf(files[index]) << '\n';
        std::cout << std::ifstream(path).rdbuf();
        std::cout.clear();  // an empty file sets a failure
        std::cout.flush();
      });
  if (!options.json.empty()) WriteJson(options, files.size());
  if (!options.floors.empty()) WriteFloors(options, files.size());
  return good ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Recovers records from made-up databases and tells how well that went.");
  Options options;
  AddOptions(app, options);
  CLI11_PARSE(app, argc, argv);
  try {
    const auto work = options.work.empty() ? std::filesystem::temp_directory_path() /
                                                 ("recovery-" + std::to_string(::getpid()))
                                           : std::filesystem::path(options.work);
    options.settings.config_path = options.config;
    options.settings.folder = work.string();
    options.settings.seeds = Seeds(options.seeds);
    options.settings.most_examples = std::max(options.show_false, options.show_missed);
    std::filesystem::create_directories(work);
    const int code = Run(options);
    std::filesystem::remove_all(work);
    return code;
  } catch (const std::exception& fault) {
    std::cerr << "recovery: " << fault.what() << '\n';
    return 1;
  }
}
