// The logging interface: form of a line, targets, and calls from many threads.
#include "vexalogsdk/vexa_log_sdk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::string ReadAll(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// A line without its time, which differs from run to run.
std::string WithoutTime(const std::string& line) {
  const std::size_t space = line.find(' ');
  return space == std::string::npos ? line : line.substr(space + 1);
}

class VexaLogSdkTest : public testing::Test {
 protected:
  VexaLogSdkTest() {
    std::string pattern = (fs::temp_directory_path() / "vexa_log_XXXXXX").string();
    const char* made = mkdtemp(pattern.data());
    if (made != nullptr) folder_ = made;
  }
  ~VexaLogSdkTest() override {
    UninitLog();
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  fs::path File(const std::string& name) const { return folder_ / name; }
  int Open(const std::string& name) const { return InitLogEx("", "Default", File(name).c_str()); }
  std::vector<std::string> Messages(const std::string& name) const {
    std::vector<std::string> lines = SplitLines(ReadAll(File(name)));
    for (std::string& line : lines) line = WithoutTime(line);
    return lines;
  }

  fs::path folder_;
};

TEST_F(VexaLogSdkTest, LineIsUtcTimeWithMillisecondsThenLevelModuleAndMessage) {
  // A zone far from UTC: local time would show as another hour.
  const char* old_zone = std::getenv("TZ");
  const std::string kept_zone = old_zone == nullptr ? "" : old_zone;
  setenv("TZ", "XYZ-11:30", 1);
  tzset();
  ASSERT_EQ(Open("a.log"), 0);
  const std::time_t before = std::time(nullptr);
  LogEx("Module", 1, "value %d of %s", 7, "text");
  const std::time_t after = std::time(nullptr);
  if (old_zone == nullptr) {
    unsetenv("TZ");
  } else {
    setenv("TZ", kept_zone.c_str(), 1);
  }
  tzset();

  const std::string text = ReadAll(File("a.log"));
  std::smatch match;
  ASSERT_TRUE(std::regex_match(
      text, match,
      std::regex("(\\d{4})-(\\d\\d)-(\\d\\d)T(\\d\\d):(\\d\\d):(\\d\\d)\\.(\\d{3})Z info Module "
                 "value 7 of text\n")))
      << text;
  std::tm utc{};
  utc.tm_year = std::stoi(match[1]) - 1900;
  utc.tm_mon = std::stoi(match[2]) - 1;
  utc.tm_mday = std::stoi(match[3]);
  utc.tm_hour = std::stoi(match[4]);
  utc.tm_min = std::stoi(match[5]);
  utc.tm_sec = std::stoi(match[6]);
  EXPECT_GE(timegm(&utc), before);
  EXPECT_LE(timegm(&utc), after);
}

TEST_F(VexaLogSdkTest, LevelsHaveNames) {
  ASSERT_EQ(Open("a.log"), 0);
  for (const int level : {-1, 0, 1, 2, 3, 4, 99}) LogEx("M", level, "%d", level);
  EXPECT_THAT(Messages("a.log"), ElementsAre("debug M -1", "debug M 0", "info M 1", "warning M 2",
                                             "error M 3", "error M 4", "error M 99"));
}

TEST_F(VexaLogSdkTest, MessageStaysAsItIs) {
  const struct {
    const char* name;
    std::string message;
    std::string line_end;
  } kCases[] = {
      {"plain text", "Enter Scan", "Enter Scan\n"},
      {"nothing", "", "\n"},
      {"one line feed at the end is the line's own", "text\n", "text\n"},
      {"of two line feeds both stay", "text\n\n", "text\n\n"},
      {"a line feed alone", "\n", "\n"},
      {"a line feed within", "one\ntwo", "one\ntwo\n"},
      {"braces and percent signs", "{} {0} %v %n %", "{} {0} %v %n %\n"},
      {"blanks at both ends", "  text\t ", "  text\t \n"},
      {"several scripts", "写真 \xF0\x9F\x98\x80 ß", "写真 \xF0\x9F\x98\x80 ß\n"},
      {"bytes that are no UTF-8", "\xFF\xC0\x80", "\xFF\xC0\x80\n"},
      {"carriage return", "text\r\n", "text\r\n"},
  };
  int number = 0;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.name);
    const std::string file = "case" + std::to_string(number++);
    ASSERT_EQ(Open(file), 0);
    LogEx("M", 3, "%s", row.message.c_str());
    EXPECT_EQ(WithoutTime(ReadAll(File(file))), "error M " + row.line_end);
  }
}

TEST_F(VexaLogSdkTest, MessageOfManyMegabytesIsWhole) {
  std::string message(5U << 20U, 'x');
  for (std::size_t i = 0; i < message.size(); i += 1000)
    message[i] = static_cast<char>('a' + i % 26);
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "%s", message.c_str());
  EXPECT_TRUE(WithoutTime(ReadAll(File("a.log"))) == "info M " + message + "\n");
}

TEST_F(VexaLogSdkTest, LineIsInTheFileWhenTheCallReturns) {
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "first");
  EXPECT_THAT(Messages("a.log"), ElementsAre("info M first"));
  LogEx("M", 1, "second");
  EXPECT_THAT(Messages("a.log"), ElementsAre("info M first", "info M second"));
}

TEST_F(VexaLogSdkTest, FileIsAppendedTo) {
  std::ofstream(File("a.log")) << "old Line\n";
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "one");
  UninitLog();
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "two");
  EXPECT_THAT(Messages("a.log"), ElementsAre("Line", "info M one", "info M two"));
}

TEST_F(VexaLogSdkTest, SecondInitMovesToTheNewFile) {
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "one");
  ASSERT_EQ(Open("b.log"), 0);
  LogEx("M", 1, "two");
  EXPECT_THAT(Messages("a.log"), ElementsAre("info M one"));
  EXPECT_THAT(Messages("b.log"), ElementsAre("info M two"));
}

TEST_F(VexaLogSdkTest, SecondInitOnTheSameFileGoesOn) {
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "one");
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "two");
  EXPECT_THAT(Messages("a.log"), ElementsAre("info M one", "info M two"));
}

TEST_F(VexaLogSdkTest, MissingFoldersAreMade) {
  ASSERT_EQ(Open("x/y/a.log"), 0);
  LogEx("M", 1, "one");
  EXPECT_THAT(Messages("x/y/a.log"), ElementsAre("info M one"));
}

TEST_F(VexaLogSdkTest, ModuleOfInitNamesLinesWithoutOne) {
  ASSERT_EQ(Open("a.log"), 0);
  LogEx(nullptr, 1, "one");
  ASSERT_EQ(InitLogEx(nullptr, nullptr, File("b.log").c_str()), 0);
  LogEx(nullptr, 1, "two");
  EXPECT_THAT(Messages("a.log"), ElementsAre("info Default one"));
  EXPECT_THAT(Messages("b.log"), ElementsAre("info  two"));
}

TEST_F(VexaLogSdkTest, NothingHappensBeforeInitAndAfterUninit) {
  LogEx("M", 1, "too early %d", 1);
  EXPECT_EQ(UninitLog(), 0);
  ASSERT_EQ(Open("a.log"), 0);
  EXPECT_EQ(UninitLog(), 0);
  LogEx("M", 1, "too late %d", 1);
  EXPECT_EQ(UninitLog(), 0);
  EXPECT_THAT(Messages("a.log"), IsEmpty());
}

TEST_F(VexaLogSdkTest, NullFormatIsLeftOut) {
  ASSERT_EQ(Open("a.log"), 0);
  const char* format = nullptr;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  LogEx("M", 1, format);
#pragma GCC diagnostic pop
  EXPECT_THAT(Messages("a.log"), IsEmpty());
}

TEST_F(VexaLogSdkTest, FileThatCannotBeOpenedIsReportedAndLogsNowhere) {
  std::ofstream(File("file")) << "";
  // Refused for root as well: a folder, and a path through a file.
  const std::string kPaths[] = {folder_.string(), File("file/a.log").string(), ""};
  for (const std::string& path : kPaths) {
    SCOPED_TRACE(path);
    ASSERT_EQ(Open("good.log"), 0);
    EXPECT_EQ(InitLogEx("", "M", path.c_str()), 1);
    LogEx("M", 1, "must not reach the earlier file");
  }
  EXPECT_EQ(InitLogEx("", "M", nullptr), 1);
  LogEx("M", 1, "nowhere");
  EXPECT_THAT(Messages("good.log"), IsEmpty());
}

TEST_F(VexaLogSdkTest, FullDiskDropsTheLine) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  ASSERT_EQ(InitLogEx("", "M", "/dev/full"), 0);
  EXPECT_NO_THROW(LogEx("M", 1, "short"));
  EXPECT_NO_THROW(LogEx("M", 1, "%s", std::string(1U << 20U, 'x').c_str()));
  ASSERT_EQ(Open("a.log"), 0);
  LogEx("M", 1, "again");
  EXPECT_THAT(Messages("a.log"), ElementsAre("info M again"));
}

TEST_F(VexaLogSdkTest, LinesOfManyThreadsStayWhole) {
  constexpr int kThreads = 8;
  constexpr int kLines = 500;
  ASSERT_EQ(Open("a.log"), 0);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread] {
      const std::string tail(static_cast<std::size_t>(thread) * 300, 't');
      for (int line = 0; line < kLines; ++line)
        LogEx("M", 1, "%d %d %s|", thread, line, tail.c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::map<int, int> next;  // lines of one thread come in their order
  for (const std::string& line : Messages("a.log")) {
    int thread = -1;
    int number = -1;
    ASSERT_EQ(std::sscanf(line.c_str(), "info M %d %d ", &thread, &number), 2) << line;
    EXPECT_EQ(number, next[thread]++);
    const std::string tail(static_cast<std::size_t>(thread) * 300, 't');
    EXPECT_EQ(line,
              "info M " + std::to_string(thread) + " " + std::to_string(number) + " " + tail + "|");
  }
  for (int thread = 0; thread < kThreads; ++thread) EXPECT_EQ(next[thread], kLines);
}

TEST_F(VexaLogSdkTest, LoggingBesideInitAndUninitGivesWholeLinesOnly) {
  std::atomic<bool> go_on{true};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&go_on] {
      while (go_on) LogEx("M", 2, "%s", "a line that is whole");
    });
  }
  for (int round = 0; round < 200; ++round) {
    EXPECT_EQ(Open(round % 2 == 0 ? "a.log" : "b.log"), 0);
    LogEx("M", 1, "round");
    EXPECT_EQ(UninitLog(), 0);
  }
  go_on = false;
  for (std::thread& thread : threads) thread.join();

  int rounds = 0;
  for (const char* name : {"a.log", "b.log"}) {
    for (const std::string& line : Messages(name)) {
      if (line == "info M round") {
        ++rounds;
      } else {
        EXPECT_EQ(line, "warning M a line that is whole");
      }
    }
  }
  EXPECT_EQ(rounds, 200);
}

}  // namespace
