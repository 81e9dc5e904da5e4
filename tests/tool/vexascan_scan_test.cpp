// vexascan scan from the request to the result: what it finds, what it says, what it leaves behind.
#include <json/json.h>

#include <ostream>
#include <sstream>

#include "tool/vexascan_runner.h"

namespace vexascan_test {
namespace {

using ScanTest = VexascanTest;

struct Counts {
  int rows = -1;
  int live = -1;
  int recovered = -1;
  bool operator==(const Counts&) const = default;
};

void PrintTo(const Counts& counts, std::ostream* out) {
  *out << counts.rows << " rows, " << counts.live << " live, " << counts.recovered << " recovered";
}

// The line of the table on screen that begins with `name`.
Counts CountsOf(const std::string& output, const std::string& name) {
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string first;
    Counts counts;
    if (words >> first >> counts.rows >> counts.live >> counts.recovered && first == name) {
      return counts;
    }
  }
  return {};
}

struct RangeCase {
  const char* range;
  Counts counts;
};

TEST_F(ScanTest, CountsLiveAndRecoveredRowsOfEachRange) {
  MakeSource(3);
  const std::vector<RangeCase> cases{
      {"all", {12, 9, 3}}, {"live", {9, 9, 0}}, {"deleted", {12, 9, 3}}, {"none", {0, 0, 0}}};
  for (const RangeCase& each : cases) {
    SCOPED_TRACE(each.range);
    const ToolRun run = RunTool(ScanWords({"--range", each.range}));
    EXPECT_EQ(run.exit_code, 0) << run.output;
    EXPECT_EQ(CountsOf(run.output, "sms"), each.counts) << run.output;
    EXPECT_EQ(CountsOf(run.output, "total"), each.counts) << run.output;
    EXPECT_EQ(Sqlite(Result()).Ask("select count(*) from sms"), std::to_string(each.counts.rows));
  }
}

TEST_F(ScanTest, BringsBackTheTextOfADeletedMessage) {
  MakeSource(1);
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_EQ(Sqlite(Result()).Ask("select body from sms where date = 1704103210002"),
            "Message number 2 of this phone");
}

TEST_F(ScanTest, ReadsMessagesThatStandInTheLogAlone) {
  MakeSource();
  ASSERT_EQ(RunTool(ScanWords({"--range", "live"})).exit_code, 0);
  EXPECT_EQ(Sqlite(Result()).Ask("select body from sms where _id > 10 order by _id"),
            "Message number 11 of this phone\nMessage number 12 of this phone");
}

TEST_F(ScanTest, ScansASourceWithoutALog) {
  MakeSource();
  fs::remove(SourceLog());
  const ToolRun run = RunTool(ScanWords());
  EXPECT_EQ(run.exit_code, 0) << run.output;
  EXPECT_EQ(CountsOf(run.output, "sms"), (Counts{10, 10, 0})) << run.output;
}

TEST_F(ScanTest, LeavesEvidenceAndConfigurationAsTheyWere) {
  MakeSource(2);
  const auto evidence = BytesIn(Source().parent_path());
  const auto config = BytesIn(Config().parent_path());
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_EQ(BytesIn(Source().parent_path()), evidence);
  EXPECT_EQ(BytesIn(Config().parent_path()), config);
}

TEST_F(ScanTest, ScansASourceThatNobodyMayWriteTo) {
  MakeSource();
  fs::permissions(Source(), fs::perms::owner_read);
  fs::permissions(SourceLog(), fs::perms::owner_read);
  const ToolRun run = RunTool(ScanWords());
  EXPECT_EQ(run.exit_code, 0) << run.output;
}

TEST_F(ScanTest, ReadsAReadOnlyConfiguration) {
  MakeSource();
  fs::permissions(Config(), fs::perms::owner_read);
  EXPECT_EQ(RunTool(ScanWords()).exit_code, 0);
}

TEST_F(ScanTest, RemovesItsWorkingCopies) {
  MakeSource();
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_TRUE(fs::is_empty(Temp()));
}

TEST_F(ScanTest, PutsTheLogBesideTheResultUnlessToldOtherwise) {
  MakeSource();
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_TRUE(fs::exists(root() / "out" / "vexa_sqlite_sdk.log"));
  fs::create_directory(root() / "logs");
  ASSERT_EQ(RunTool(ScanWords({"--log-dir", root() / "logs"})).exit_code, 0);
  EXPECT_NE(ReadFile(root() / "logs" / "vexa_sqlite_sdk.log").find("End Scan"), std::string::npos);
}

TEST_F(ScanTest, DeliversAResultThatStandsAloneAndIsSound) {
  MakeSource(2);
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_EQ(BytesIn(root() / "out").size(), 2U);  // the result and the log file
  Sqlite result(Result());
  EXPECT_EQ(result.Ask("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(result.Ask("PRAGMA journal_mode"), "delete");
}

TEST_F(ScanTest, ReplacesTheResultOfAnEarlierScan) {
  MakeSource(2);
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  Sqlite(Result()).Run("delete from sms");
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_EQ(Sqlite(Result()).Ask("select count(*) from sms"), "12");
}

TEST_F(ScanTest, ReplacesAnEmptyFile) {
  MakeSource();
  WriteFile(Result(), "");
  EXPECT_EQ(RunTool(ScanWords()).exit_code, 0);
  EXPECT_EQ(Sqlite(Result()).Ask("select count(*) from sms"), "12");
}

TEST_F(ScanTest, ExplainsAFailedScanAndKeepsTheEarlierResult) {
  MakeSource();
  ASSERT_EQ(RunTool(ScanWords()).exit_code, 0);
  const std::string earlier = ReadFile(Result());
  WriteFile(Source(), std::string(4096, 'x'));
  const ToolRun run = RunTool(ScanWords());
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_NE(run.output.find("result code 1003"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("no readable SQLite database"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("not a valid SQLite DB file."), std::string::npos) << run.output;
  EXPECT_EQ(ReadFile(Result()), earlier);
  EXPECT_TRUE(fs::is_empty(Temp()));
}

TEST_F(ScanTest, SaysThatItWasCutByASignalAndCleansUp) {
  MakeSource();
  const auto evidence = BytesIn(Source().parent_path());
  for (const char* range : {"all", "live"}) {
    SCOPED_TRACE(range);
    const ToolRun run = RunTool(ScanWords({"--range", range}), Interrupt::kBeforeStart);
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.output.find("cut by a signal"), std::string::npos) << run.output;
    EXPECT_TRUE(fs::is_empty(Temp()));
  }
  EXPECT_EQ(BytesIn(Source().parent_path()), evidence);
}

class ParameterFileTest : public VexascanTest {
 protected:
  void SetUp() override {
    VexascanTest::SetUp();
    MakeSource(3);
    parameters_["system_type"] = 0;
    parameters_["data_type"] = 1;
    parameters_["scan_range_type"] = 0;
    parameters_["source_db_path"] = Source().string();
    parameters_["dest_db_path"] = Result().string();
    parameters_["temp_folder"] = Temp().string();
  }

  ToolRun RunWith(const std::string& text) const {
    WriteFile(root() / "request.json", text);
    return RunTool(
        {"scan", "--params", root() / "request.json", "--config", Config().parent_path()});
  }
  ToolRun RunWith(const Json::Value& parameters) const {
    return RunWith(parameters.toStyledString());
  }

  Json::Value parameters_{Json::objectValue};
};

TEST_F(ParameterFileTest, AsksForTheSameScanAsTheWords) {
  const ToolRun run = RunWith(parameters_);
  EXPECT_EQ(run.exit_code, 0) << run.output;
  EXPECT_EQ(CountsOf(run.output, "sms"), (Counts{12, 9, 3})) << run.output;
  EXPECT_TRUE(fs::is_empty(Temp()));
}

TEST_F(ParameterFileTest, TakesAVersionAndIgnoresKeysItDoesNotKnow) {
  parameters_["system_version"] = 13;
  parameters_["remark"] = "found in a drawer";
  EXPECT_EQ(RunWith(parameters_).exit_code, 0);
}

TEST_F(ParameterFileTest, TakesAnEmptyTempFolderForTheSystems) {
  parameters_["temp_folder"] = "";
  const ToolRun run = RunWith(parameters_);
  EXPECT_EQ(run.exit_code, 0) << run.output;
}

TEST_F(ParameterFileTest, RefusesWhatTheWordsWouldRefuse) {
  parameters_["dest_db_path"] = Source().string();
  const std::string before = ReadFile(Source());
  EXPECT_EQ(RunWith(parameters_).exit_code, 2);
  EXPECT_EQ(ReadFile(Source()), before);
}

TEST_F(ParameterFileTest, IsRefusedWhenAKeyIsMissingOrOfTheWrongKind) {
  for (const char* key : {"system_type", "data_type", "scan_range_type", "source_db_path",
                          "dest_db_path", "temp_folder"}) {
    SCOPED_TRACE(key);
    for (const Json::Value& value : {Json::Value(), Json::Value(Json::arrayValue), Json::Value(-1),
                                     Json::Value(99), Json::Value(0.5)}) {
      Json::Value parameters = parameters_;
      parameters[key] = value;
      const ToolRun run = RunWith(parameters);
      EXPECT_EQ(run.exit_code, 2) << run.output;
      EXPECT_NE(run.output.find(key), std::string::npos) << run.output;
    }
  }
  EXPECT_FALSE(fs::exists(Result()));
}

TEST_F(ParameterFileTest, IsRefusedWhenItHoldsNoObject) {
  for (const char* text : {"", "{", "[]", "7", "null"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(RunWith(std::string(text)).exit_code, 2);
  }
}

TEST_F(ParameterFileTest, StandsAlone) {
  WriteFile(root() / "request.json", parameters_.toStyledString());
  EXPECT_EQ(RunTool({"scan", "--params", root() / "request.json", "--app", "sms"}).exit_code, 2);
  EXPECT_EQ(RunTool({"scan", "--params", root() / "missing.json"}).exit_code, 2);
}

}  // namespace
}  // namespace vexascan_test
