// The figures of every application that there are facts for, on made-up databases of seeds that
// nobody tunes the configuration by.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "recovery/evaluate.h"
#include "recovery/facts_reader.h"
#include "recovery/floors.h"
#include "recovery/report.h"
#include "recovery/scan_runner.h"
#include "recovery/scenario.h"
#include "support/temp_folder.h"

namespace recovery {
namespace {

// A build for debugging, for sanitizers or for coverage takes an hour for what an optimised one
// does in minutes, and finds the same records.
#ifdef NDEBUG
constexpr bool kOptimised = true;
#else
constexpr bool kOptimised = false;
#endif

const std::string kFacts = VEXA_SOURCE_DIR "/tests/recovery/facts";
const std::string kSources = VEXA_SOURCE_DIR "/config";
const std::string kFloors = VEXA_SOURCE_DIR "/tests/recovery/floors.yaml";
const std::string kConfig = VEXA_BUILD_DIR "/VexaConfiger.db";

std::string ApplicationOf(const std::string& file) {
  const std::filesystem::path path(file);
  return path.parent_path().filename().string() + '/' + path.stem().string();
}

std::string TestName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = ApplicationOf(info.param);
  for (char& c : name) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  }
  return name;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  return text;
}

class Application : public ::testing::TestWithParam<std::string> {};

TEST_P(Application, ReachesItsFloors) {
  if (!kOptimised) GTEST_SKIP() << "measured by optimised builds";
  const Facts facts = ReadFacts(GetParam());
  EXPECT_EQ(facts.Name(), ApplicationOf(GetParam()));
  const TempFolder folder;
  EvaluateSettings settings;
  settings.config_path = kConfig;
  settings.folder = folder.path().string();
  settings.seeds = HeldOutSeeds();
  settings.rows = 200;
  const Evaluation evaluation = Evaluate(facts, settings);
  EXPECT_TRUE(evaluation.failures.empty()) << Joined(evaluation.failures);
  const std::vector<std::string> faults =
      Floors::Read(kFloors).Faults(facts.Name(), evaluation.tables);
  std::ostringstream report;
  PrintHead(report);
  PrintReport(report, evaluation.tables);
  EXPECT_TRUE(faults.empty()) << Joined(faults) << report.str();
}

INSTANTIATE_TEST_SUITE_P(All, Application, ::testing::ValuesIn(FactsFiles(kFacts)), TestName);

std::vector<std::string> Applications(const std::vector<std::string>& files) {
  std::vector<std::string> names;
  for (const std::string& file : files) names.push_back(ApplicationOf(file));
  return names;
}

// Whether deleted rows of some table are looked for. Where only column names are known and no
// layout, there is nothing to make a database from.
bool CarvesSomething(const std::string& source) {
  const YAML::Node tables = YAML::LoadFile(source)["tables"];
  return std::any_of(tables.begin(), tables.end(),
                     [](const YAML::Node& table) { return table["scan"]["deleted"].as<bool>(); });
}

std::vector<std::string> CarvedSources() {
  std::vector<std::string> sources = FactsFiles(kSources);
  std::erase_if(sources, [](const std::string& source) { return !CarvesSomething(source); });
  return sources;
}

// Whatever is carved is measured, and no floor is given for anything else.
TEST(AllApplications, HaveFacts) {
  const std::vector<std::string> known = Applications(FactsFiles(kFacts));
  EXPECT_FALSE(known.empty());
  EXPECT_THAT(known, ::testing::IsSupersetOf(Applications(CarvedSources())));
  EXPECT_THAT(known, ::testing::IsSupersetOf(Floors::Read(kFloors).Applications()));
}

// One folder of databases of all applications, each scanned for all there is.
TEST(AllApplications, AreScannedWithoutFailure) {
  const TempFolder folder;
  ScanRunner runner(kConfig, folder.File("scan"));
  size_t scans = 0;
  for (const std::string& file : FactsFiles(kFacts)) {
    const Facts facts = ReadFacts(file);
    for (const DatabaseFacts& database : facts.databases) {
      const std::string own = folder.File(facts.system + '_' + facts.data_type);
      const auto truth = MakeDatabase(facts, database, {"mixed", own, 0, 40, HeldOutSeeds()[0]});
      ASSERT_TRUE(truth) << file;
      const ScanResult result = runner.Scan(facts.system, facts.data_type, truth->system_version,
                                            truth->path, truth->path + ".result");
      EXPECT_EQ(result.failure, "") << facts.Name() << ' ' << database.file;
      ++scans;
    }
  }
  EXPECT_GT(scans, 0U);
}

}  // namespace
}  // namespace recovery
