// vexascan demo: the sample is what it claims to be, and its deleted messages come back.
#include <sstream>

#include "tool/vexascan_runner.h"

namespace vexascan_test {
namespace {

class DemoTest : public VexascanTest {
 protected:
  fs::path Folder() const { return root() / "demo"; }

  // The whole numbers that follow `words` on its line.
  static std::vector<int> NumbersBehind(const std::string& output, const std::string& words) {
    const std::size_t found = output.find(words);
    if (found == std::string::npos) {
      return {};
    }
    const std::size_t start = found + words.size();
    std::istringstream rest(output.substr(start, output.find('\n', start) - start));
    std::vector<int> numbers;
    for (int number = 0; rest >> number;) {
      numbers.push_back(number);
    }
    return numbers;
  }

  ToolRun Demo() const { return RunTool({"demo", "--out", Folder(), "--temp", Temp()}); }
};

TEST_F(DemoTest, BringsDeletedMessagesBackInEveryKind) {
  const ToolRun run = Demo();
  EXPECT_EQ(run.exit_code, 0) << run.output;
  for (const char* words : {"single messages, pages live on", "a whole conversation, pages freed",
                            "written and deleted in the log only"}) {
    const std::vector<int> counts = NumbersBehind(run.output, words);
    ASSERT_EQ(counts.size(), 4U) << run.output;  // deleted, standing, came back, percent
    EXPECT_GE(counts[0], 45) << words;
    EXPECT_GE(counts[1] * 10, counts[0] * 8) << words;
    EXPECT_GE(counts[2] * 10, counts[1] * 9) << words;
    EXPECT_GE(counts[3], 90) << words;
  }
  // Remains of two messages can read as one; that must stay rare.
  const std::vector<int> mixed =
      NumbersBehind(run.output, "which equal none that was ever written:");
  ASSERT_EQ(mixed.size(), 1U) << run.output;
  EXPECT_LE(mixed[0], 10);
}

TEST_F(DemoTest, TellsWhereSampleResultAndLogAre) {
  const ToolRun run = Demo();
  for (const char* name : {"mmssms.db", "result.db", "vexa_sqlite_sdk.log"}) {
    EXPECT_TRUE(fs::is_regular_file(Folder() / name)) << name;
    EXPECT_NE(run.output.find((Folder() / name).string()), std::string::npos) << run.output;
  }
  EXPECT_TRUE(fs::is_empty(Temp()));
}

TEST_F(DemoTest, LeavesDeletedMessagesToTheBytesAlone) {
  ASSERT_EQ(Demo().exit_code, 0);
  const std::string main_file = ReadFile(Folder() / "mmssms.db");
  const std::string log = ReadFile(Folder() / "mmssms.db-wal");
  fs::copy(Folder(), root() / "copy");
  Sqlite sample(root() / "copy" / "mmssms.db");
  EXPECT_EQ(sample.Ask("PRAGMA integrity_check"), "ok");
  // A conversation is gone whole, its pages are free, and the log ends in messages that are gone.
  EXPECT_EQ(sample.Ask("select count(*) from sms where thread_id = 12"), "0");
  EXPECT_GT(std::stoi(sample.Ask("PRAGMA freelist_count")), 0);
  EXPECT_NE(sample.Ask("select count(*) from sms where _id > 440"), "60");
  int long_texts = 0;
  for (int number = 206; number <= 310; number += 12) {
    const bool stands =
        main_file.find("Letter " + std::to_string(number) + ":") != std::string::npos;
    long_texts += stands ? 1 : 0;
  }
  EXPECT_GE(long_texts, 5);
  EXPECT_EQ(main_file.find(" #441"), std::string::npos);
  EXPECT_NE(log.find(" #441"), std::string::npos);
}

TEST_F(DemoTest, IsTheSameOnEveryRun) {
  ASSERT_EQ(Demo().exit_code, 0);
  const std::string first = ReadFile(Folder() / "mmssms.db");
  const std::string texts =
      Sqlite(Folder() / "result.db").Ask("select body from sms order by date");
  ASSERT_EQ(Demo().exit_code, 0);
  EXPECT_EQ(ReadFile(Folder() / "mmssms.db"), first);
  EXPECT_EQ(Sqlite(Folder() / "result.db").Ask("select body from sms order by date"), texts);
}

TEST_F(DemoTest, RefusesAFolderWithFilesThatNoDemoMade) {
  fs::create_directory(Folder());
  WriteFile(Folder() / "mmssms.db", "a real one");
  EXPECT_EQ(Demo().exit_code, 2);
  EXPECT_EQ(ReadFile(Folder() / "mmssms.db"), "a real one");
  EXPECT_EQ(BytesIn(Folder()).size(), 1U);
}

TEST_F(DemoTest, FailsWhenNothingComesBack) {
  // The messages are known to this configuration, but none of their columns is to be kept.
  Sqlite(Config()).Run("delete from result_field_info");
  const ToolRun run =
      RunTool({"demo", "--out", Folder(), "--temp", Temp(), "--config", Config().parent_path()});
  EXPECT_EQ(run.exit_code, 1) << run.output;
  EXPECT_NE(run.output.find("Fewer than 90 of 100"), std::string::npos) << run.output;
}

}  // namespace
}  // namespace vexascan_test
