// What vexascan scan refuses before it touches anything: exit code 2, a sentence that says why, and
// every file as it was.
#include <algorithm>
#include <functional>
#include <ostream>

#include "tool/vexascan_runner.h"

namespace vexascan_test {
namespace {

struct Sandbox {
  fs::path root;
  fs::path evidence() const { return root / "evidence"; }
  fs::path config() const { return root / "config"; }
  fs::path out() const { return root / "out"; }
};

struct Refusal {
  const char* name;
  const char* changed_option;                              // which word gets another value
  std::function<std::string(const Sandbox&)> other_value;  // makes what it needs, too
  const char* words;                                       // that the message holds
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

std::function<std::string(const Sandbox&)> Path(const char* relative) {
  return [relative](const Sandbox& box) { return (box.root / relative).string(); };
}

std::function<std::string(const Sandbox&)> Word(const char* word) {
  return [word](const Sandbox&) { return std::string(word); };
}

std::string Holding(const fs::path& path, std::string_view bytes) {
  WriteFile(path, bytes);
  return path;
}

const std::vector<Refusal>& Refusals() {
  static const std::vector<Refusal> list{
      {"ResultIsTheSource", "--out", Path("evidence/mmssms.db"), "is the source"},
      {"ResultIsTheSourceSpelledInAnotherWay", "--out", Path("evidence/../evidence/./mmssms.db"),
       "is the source"},
      {"ResultIsASymbolicLinkToTheSource", "--out",
       [](const Sandbox& box) {
         fs::create_symlink(box.evidence() / "mmssms.db", box.out() / "link.db");
         return (box.out() / "link.db").string();
       },
       "is the source"},
      {"ResultIsAHardLinkToTheSource", "--out",
       [](const Sandbox& box) {
         fs::create_hard_link(box.evidence() / "mmssms.db", box.out() / "hard.db");
         return (box.out() / "hard.db").string();
       },
       "is the source"},
      {"ResultLiesInALinkedFolderAndIsTheSource", "--out",
       [](const Sandbox& box) {
         fs::create_directory_symlink(box.evidence(), box.out() / "folder");
         return (box.out() / "folder" / "mmssms.db").string();
       },
       "is the source"},
      {"ResultIsTheLogOfTheSource", "--out", Path("evidence/mmssms.db-wal"),
       "belongs to the source"},
      {"ResultIsAHardLinkToTheLogOfTheSource", "--out",
       [](const Sandbox& box) {
         fs::create_hard_link(box.evidence() / "mmssms.db-wal", box.out() / "log.db");
         return (box.out() / "log.db").string();
       },
       "belongs to the source"},
      {"ResultTakesTheNameOfTheSharedMemoryOfTheSource", "--out", Path("evidence/mmssms.db-shm"),
       "belongs to the source"},
      {"ResultTakesTheNameOfTheJournalOfTheSource", "--out", Path("evidence/mmssms.db-journal"),
       "belongs to the source"},
      {"ResultIsTheConfiguration", "--out", Path("config/VexaConfiger.db"),
       "is the configuration database"},
      {"ResultIsTheLogOfTheConfiguration", "--out", Path("config/VexaConfiger.db-wal"),
       "belongs to the configuration database"},
      {"LogOfTheResultIsTheSource", "--source",
       [](const Sandbox& box) {
         fs::rename(box.evidence() / "mmssms.db", box.out() / "result.db-wal");
         return (box.out() / "result.db-wal").string();
       },
       "is the source"},
      {"ResultIsAFolder", "--out", Path("out"), "is a folder"},
      {"ResultLiesInAMissingFolder", "--out", Path("missing/result.db"), "does not exist"},
      {"ResultExistsAndIsNoDatabase", "--out",
       [](const Sandbox& box) { return Holding(box.out() / "report.txt", "precious words"); },
       "is not the result of an earlier scan"},
      {"ResultExistsAndIsAnotherDatabase", "--out",
       [](const Sandbox& box) {
         Sqlite(box.out() / "other.db").Run("create table calls (number)");
         return (box.out() / "other.db").string();
       },
       "is not the result of an earlier scan"},
      {"ResultHasAFilledLogBesideIt", "--out",
       [](const Sandbox& box) {
         WriteFile(box.out() / "busy.db", "");
         WriteFile(box.out() / "busy.db-wal", "unsaved");
         return (box.out() / "busy.db").string();
       },
       "would be lost"},
      {"ALogWithoutItsDatabaseStandsWhereTheResultIsToGo", "--out",
       [](const Sandbox& box) {
         WriteFile(box.out() / "gone.db-wal", "");
         return (box.out() / "gone.db").string();
       },
       "would be lost"},
      {"ResultIsTheLogFile", "--out", Path("out/vexa_sqlite_sdk.log"), "would both be"},
      {"TempFolderIsTheSourcesOwn", "--temp", Path("evidence"), "is the source's own"},
      {"TempFolderIsTheSourcesOwnThroughALink", "--temp",
       [](const Sandbox& box) {
         fs::create_directory_symlink(box.evidence(), box.out() / "linked");
         return (box.out() / "linked").string();
       },
       "is the source's own"},
      {"TempFolderIsMissing", "--temp", Path("missing"), "does not exist"},
      {"SourceIsMissing", "--source", Path("evidence/other.db"), "does not exist"},
      {"SourceIsAFolder", "--source", Path("evidence"), "is not a file"},
      {"SourceHasAFolderForALog", "--source",
       [](const Sandbox& box) {
         fs::create_directory(box.evidence() / "second.db-wal");
         return Holding(box.evidence() / "second.db", "");
       },
       "is not a file that can be read"},
      {"ConfigurationFolderHoldsNone", "--config", Path("out"), "holds no VexaConfiger.db"},
      {"ConfigurationIsNoDatabase", "--config",
       [](const Sandbox& box) {
         Holding(box.out() / "VexaConfiger.db", "not a database, though long enough to be read");
         return box.out().string();
       },
       "is not a configuration database"},
      {"LogFolderIsMissing", "--log-dir", Path("missing"), "does not exist"},
      {"LogFileIsALinkToTheSource", "--log-dir",
       [](const Sandbox& box) {
         fs::create_directory(box.root / "logs");
         fs::create_hard_link(box.evidence() / "mmssms.db", box.root / "logs/vexa_sqlite_sdk.log");
         return (box.root / "logs").string();
       },
       "is the source"},
      {"ApplicationIsUnknown", "--app", Word("telegraph"), "telegraph"},
      {"ApplicationIsNotInTheConfiguration", "--app", Word("safari"), "does not cover"},
      {"SystemIsUnknown", "--system", Word("symbian"), "symbian"},
      {"RangeIsUnknown", "--range", Word("some"), "some"},
      {"VersionIsNoNumber", "--os-version", Word("twelve"), "twelve"},
  };
  return list;
}

class RefusalTest : public VexascanTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusalTest, IsToldAndNothingIsTouched) {
  MakeSource();
  const Sandbox box{root()};
  const std::string value = GetParam().other_value(box);
  std::vector<std::string> words = ScanWords({"--log-dir", box.out(), "--range", "all"});
  const auto option = std::find(words.begin(), words.end(), GetParam().changed_option);
  if (option == words.end()) {
    words.insert(words.end(), {GetParam().changed_option, value});
  } else {
    *(option + 1) = value;
  }
  const auto evidence = BytesIn(box.evidence());
  const auto config = BytesIn(box.config());
  const auto out = BytesIn(box.out());

  const ToolRun run = RunTool(words);

  EXPECT_EQ(run.exit_code, 2) << run.output;
  EXPECT_NE(run.output.find(GetParam().words), std::string::npos) << run.output;
  EXPECT_EQ(BytesIn(box.evidence()), evidence);
  EXPECT_EQ(BytesIn(box.config()), config);
  EXPECT_EQ(BytesIn(box.out()), out);
  EXPECT_TRUE(fs::is_empty(Temp()));
}

INSTANTIATE_TEST_SUITE_P(Vexascan, RefusalTest, testing::ValuesIn(Refusals()),
                         [](const auto& refusal) { return std::string(refusal.param.name); });

}  // namespace
}  // namespace vexascan_test
