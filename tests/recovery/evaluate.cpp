#include "recovery/evaluate.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>

#include "recovery/scan_runner.h"
#include "recovery/scenario.h"

namespace recovery {
namespace {

namespace fs = std::filesystem;

class Evaluator {
 public:
  Evaluator(const Facts& facts, const EvaluateSettings& settings)
      : facts_(facts),
        settings_(settings),
        runner_(settings.config_path, settings.folder + "/scan"),
        row_ids_(runner_.RowIds(facts.system, facts.data_type)),
        covered_(runner_.Covers(facts.system, facts.data_type)) {}

  Evaluation Run() {
    for (const DatabaseFacts& database : facts_.databases) {
      for (size_t generation = 0; generation < database.Generations(); ++generation) {
        for (const uint64_t seed : settings_.seeds) {
          for (const std::string_view scenario : kScenarios) {
            if (Wanted(scenario, generation)) {
              One(database, {std::string(scenario), Folder(), generation, settings_.rows, seed});
            }
          }
        }
      }
    }
    Evaluation evaluation;
    for (auto& [key, report] : reports_) evaluation.tables.push_back(std::move(report));
    evaluation.failures = std::move(failures_);
    return evaluation;
  }

 private:
  std::string Folder() const { return settings_.folder + "/made"; }

  bool Wanted(std::string_view scenario, size_t generation) const {
    const auto& chosen = settings_.scenarios;
    if (!chosen.empty() && std::find(chosen.begin(), chosen.end(), scenario) == chosen.end()) {
      return false;
    }
    return settings_.thorough || generation == 0 || scenario == kClean || scenario == "mixed" ||
           scenario == "upgrade";
  }

  void One(const DatabaseFacts& database, const ScenarioSettings& making) {
    const std::string name = facts_.Name() + " " + database.file + " " + making.scenario +
                             " generation " + std::to_string(making.generation) + " seed " +
                             std::to_string(making.seed);
    fs::remove_all(making.folder);
    fs::create_directories(making.folder);
    try {
      const std::optional<DatabaseTruth> truth = MakeDatabase(facts_, database, making);
      if (!truth) return;
      const ScanResult result = runner_.Scan(facts_.system, facts_.data_type, truth->system_version,
                                             truth->path, making.folder + "/result.db");
      // Without a configuration nothing but a log is looked at, and a missing one is a failure.
      if (!result.failure.empty() && covered_) failures_.push_back(name + ": " + result.failure);
      for (size_t i = 0; i < truth->tables.size(); ++i) {
        Take(database, i, truth->tables[i], result, making);
      }
    } catch (const std::exception& fault) {
      failures_.push_back(name + ": " + fault.what());
    }
    fs::remove_all(making.folder);
  }

  TableReport& ReportOf(const DatabaseFacts& database, size_t place, const TableTruth& table) {
    // A file can stand more than once in the facts, with other tables each time.
    const auto key = std::make_tuple(database.file, place, table.name, table.layout_index);
    const auto [found, is_new] = reports_.try_emplace(key);
    TableReport& report = found->second;
    if (!is_new) return report;
    report.system = facts_.system;
    report.data_type = facts_.data_type;
    report.database = database.file;
    report.table = table.name;
    report.layout_index = table.layout_index;
    report.label = table.layout.label;
    report.columns = table.layout.columns.size();
    report.system_version = table.layout.version;
    report.covered = runner_.Covers(facts_.system, facts_.data_type, table.name);
    return report;
  }

  void Take(const DatabaseFacts& database, size_t place, const TableTruth& table,
            const ScanResult& result, const ScenarioSettings& making) {
    if (!settings_.table.empty() && settings_.table != table.name) return;
    TableReport& report = ReportOf(database, place, table);
    const auto found = result.tables.find(table.name);
    const ResultTable* rows = found == result.tables.end() ? nullptr : &found->second;
    ++report.databases;
    report.without_table += rows == nullptr ? 1 : 0;
    const auto row_id = row_ids_.find(table.name);
    Examples examples;
    const Counts counts = Compare(table, rows, row_id == row_ids_.end() ? "" : row_id->second,
                                  settings_.most_examples, examples);
    (making.scenario == kClean ? report.clean : report.mixed).Add(counts);
    const std::string from = making.scenario + " seed " + std::to_string(making.seed) + ": ";
    Keep(examples.false_rows, from, report.examples.false_rows);
    Keep(examples.missed, from, report.examples.missed);
  }

  void Keep(const std::vector<std::string>& from, const std::string& prefix,
            std::vector<std::string>& into) const {
    for (const std::string& text : from) {
      if (into.size() < settings_.most_examples) into.push_back(prefix + text);
    }
  }

  const Facts& facts_;
  const EvaluateSettings& settings_;
  ScanRunner runner_;
  RowIdColumns row_ids_;
  bool covered_;
  std::map<std::tuple<std::string, size_t, std::string, size_t>, TableReport> reports_;
  std::vector<std::string> failures_;
};

}  // namespace

std::vector<uint64_t> TuneSeeds() { return {11, 23}; }

std::vector<uint64_t> HeldOutSeeds() { return {70001, 80021}; }

Evaluation Evaluate(const Facts& facts, const EvaluateSettings& settings) {
  return Evaluator(facts, settings).Run();
}

}  // namespace recovery
