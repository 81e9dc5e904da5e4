// The words of the command line themselves.
#include "tool/vexascan_runner.h"

namespace vexascan_test {
namespace {

struct WordsCase {
  std::vector<std::string> words;
  int exit_code;
  const char* said;
};

TEST(VexascanWords, AreAnsweredOrRefused) {
  const std::vector<WordsCase> cases{
      {{"--version"}, 0, "vexascan 2.1.0"},
      {{"--help"}, 0, "demo"},
      {{"scan", "--help"}, 0, "--source"},
      {{"demo", "--help"}, 0, "--out"},
      {{"list", "--help"}, 0, "--data-type"},
      {{}, 2, "scan"},
      {{"carve"}, 2, "carve"},
      {{"--loud"}, 2, "--loud"},
      {{"scan", "--loud"}, 2, "--loud"},
      {{"demo", "twice"}, 2, "twice"},
      {{"list", "--loud"}, 2, "--loud"},
      {{"scan"}, 2, "--system is missing"},
      {{"scan", "--system", "android"}, 2, "--app is missing"},
      {{"scan", "--system", "android", "--app", "sms"}, 2, "--source is missing"},
      {{"scan", "--system", "android", "--app", "sms", "--source", "x"}, 2, "--out is missing"},
  };
  for (const WordsCase& each : cases) {
    SCOPED_TRACE(testing::PrintToString(each.words));
    const ToolRun run = RunTool(each.words);
    EXPECT_EQ(run.exit_code, each.exit_code) << run.output;
    EXPECT_NE(run.output.find(each.said), std::string::npos) << run.output;
  }
}

}  // namespace
}  // namespace vexascan_test
