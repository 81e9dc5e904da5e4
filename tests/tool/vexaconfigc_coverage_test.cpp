// What the sources cover: the page for people, and the same in the configuration database.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vexaconfigc_fixture.h"
#include "vexaconfigc_sources.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// The source with everything that only people read.
std::string FullSource() {
  std::string text = Changed("database: mmssms.db\n",
                             "application: Pebble | mail\n"
                             "database: mmssms.db\n"
                             "not_covered:\n"
                             "  - what: drafts\n"
                             "    why: >-\n"
                             "      They are kept\n"
                             "      in memory.\n");
  const auto replace = [&text](const std::string& from, const std::string& to) {
    text.replace(text.find(from), from.size(), to);
  };
  replace("  - name: msg\n",
          "  - name: msg\n    database: other.db\n    limits: recall 0.9, since bodies move\n");
  replace("- from_version: 4\n", "- from_version: 4\n        note: release 4.\n");
  replace("    results:\n",
          "      - from_version: 6\n"
          "        live_only: true\n"
          "        note: release 6\n"
          "        sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, x TEXT, a TEXT, n INTEGER)\n"
          "      - from_version: 7\n"
          "        live_only: true\n"
          "        unreadable: true\n"
          "        note: release 7\n"
          "        sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, a VARCHAR(20), n INTEGER)\n"
          "    results:\n");
  return text;
}

std::string PageOf(const std::string& source) {
  const ConfigFolder folder;
  const ToolRun run = RunVexaconfigc(
      {folder.Write("android/sms.yaml", source), "--coverage", folder.Path("page.md")});
  EXPECT_EQ(run.exit_code, 0) << run.output;
  return FileBytes(folder.Path("page.md"));
}

TEST(VexaconfigcCoverage, SumsUpEachApplication) {
  const std::string page = PageOf(FullSource());
  EXPECT_THAT(page, HasSubstr("| android | [sms](#android-sms) | Pebble \\| mail | `other.db` | 1 "
                              "| 1 | 2 |\n"));
  EXPECT_THAT(page, HasSubstr("Without a source, and so never scanned: android contact, android "
                              "callhistory,"));
  EXPECT_THAT(page, HasSubstr("\n## android sms\n\nPebble \\| mail, `other.db`.\n"));
}

TEST(VexaconfigcCoverage, ListsTheLayoutsOfATable) {
  EXPECT_THAT(PageOf(FullSource()),
              HasSubstr("- **`msg`**, live and deleted rows\n"
                        "  - carved beside the live layout: release 4 (3 columns); from version 5 "
                        "(4 columns)\n"
                        "  - known only as the live one: release 6 (4 columns)\n"
                        "  - unreadable: release 7 (3 columns)\n"
                        "  - key: `a`\n"
                        "  - limits: recall 0.9, since bodies move.\n"));
}

TEST(VexaconfigcCoverage, SaysWhatIsNotCoveredAndWhy) {
  EXPECT_THAT(PageOf(FullSource()),
              HasSubstr("Not covered:\n\n"
                        "- drafts: They are kept in memory.\n"
                        "- `msg` as of release 7 (3 columns): the CREATE statement cannot be read: "
                        "the type of column 'a' is no type word.\n"));
}

TEST(VexaconfigcCoverage, TellsLiveRowsOnlyAndLogsOnly) {
  std::string text = Changed("deleted: true", "deleted: false");
  text.replace(text.find("scan_main_file: true"), 20, "scan_main_file: false");
  const std::string page = PageOf(text);
  EXPECT_THAT(page, HasSubstr("`mmssms.db`. Deleted rows come out of the write-ahead log only."));
  EXPECT_THAT(page, HasSubstr("- **`msg`**, live rows only\n  - known layouts: from version 4 (3 "
                              "columns); from version 5 (4 columns)\n"));
  EXPECT_THAT(page, Not(HasSubstr("Not covered:")));
}

TEST(VexaconfigcCoverage, HoldsAnApplicationWithoutAnyTable) {
  const ConfigFolder folder;
  const std::string source = folder.Write(
      "ios/wechat.yaml",
      "system: ios\ndata_type: wechat\napplication: Pebble\ndatabase: p.db\nscan_main_file: true\n"
      "not_covered: [{what: all tables, why: the file is encrypted}]\ntables: []\n");
  ASSERT_EQ(
      RunVexaconfigc({source, "--coverage", folder.Path("page.md"), "--out", folder.Path("out.db")})
          .exit_code,
      0);
  EXPECT_THAT(FileBytes(folder.Path("page.md")),
              HasSubstr("## ios wechat\n\nPebble, `p.db`.\n\n\nNot covered:\n\n- all tables: the "
                        "file is encrypted.\n"));
  EXPECT_THAT(QueryRows(folder.Path("out.db"), "select * from not_covered"),
              ElementsAre("ios|wechat|Pebble|p.db|all tables|the file is encrypted"));
  EXPECT_THAT(QueryRows(folder.Path("out.db"), "select * from scan_type_info"), IsEmpty());
}

TEST(VexaconfigcCoverage, IsTheSameWhateverTheOrderOfTheSources) {
  const ConfigFolder folder;
  const std::string sms = folder.Write("android/sms.yaml", FullSource());
  const std::string note =
      folder.Write("android/note.yaml", Changed("data_type: sms", "data_type: note"));
  ASSERT_EQ(RunVexaconfigc({sms, note, "--coverage", folder.Path("1.md")}).exit_code, 0);
  ASSERT_EQ(RunVexaconfigc({note, sms, "--coverage", folder.Path("2.md")}).exit_code, 0);
  const std::string page = FileBytes(folder.Path("1.md"));
  EXPECT_EQ(page, FileBytes(folder.Path("2.md")));
  EXPECT_LT(page.find("## android sms"), page.find("## android note"));
}

TEST(VexaconfigcCoverage, IsNotWrittenWhenASourceIsRefused) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", Changed("max: 7", "max: x"));
  EXPECT_EQ(RunVexaconfigc({source, "--coverage", folder.Path("page.md")}).exit_code, 1);
  EXPECT_THAT(folder.FileNames(), ElementsAre("android"));
}

TEST(VexaconfigcCoverage, ReportsAPageThatCannotBeWritten) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", kSource);
  const ToolRun run = RunVexaconfigc({source, "--coverage", folder.Path("no/folder/page.md")});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.output, HasSubstr("page.md: No such file or directory"));
}

TEST(VexaconfigcCoverage, StandsInTheDatabaseToo) {
  const ConfigFolder folder;
  const std::string database = folder.Path("out.db");
  ASSERT_EQ(
      RunVexaconfigc({folder.Write("android/sms.yaml", FullSource()), "--out", database}).exit_code,
      0);
  EXPECT_THAT(QueryRows(database, "select * from covered_table"),
              ElementsAre("android|sms|Pebble | mail|other.db|msg|recall 0.9, since bodies move"));
  EXPECT_THAT(QueryRows(database, "select what, why from not_covered"),
              ElementsAre("drafts|They are kept in memory.",
                          "table msg, release 7|the CREATE statement cannot be read: the type of "
                          "column 'a' is no type word"));
  EXPECT_THAT(QueryRows(database, "select count(*) from create_table_sql"), ElementsAre("i2"));
}

TEST(VexaconfigcCoverage, PageInTheTreeIsThatOfTheShippedSources) {
  const ConfigFolder folder;
  const ToolRun run =
      RunVexaconfigc({VEXA_SOURCE_DIR "/config", "--coverage", folder.Path("page.md")});
  ASSERT_EQ(run.exit_code, 0) << run.output;
  std::istringstream written(FileBytes(VEXA_SOURCE_DIR "/docs/applications.md"));
  std::istringstream expected(FileBytes(folder.Path("page.md")));
  std::string line;
  std::string expected_line;
  for (int number = 1; std::getline(expected, expected_line); ++number) {
    ASSERT_TRUE(std::getline(written, line) && line == expected_line)
        << "docs/applications.md:" << number << " does not say what the sources say:\n"
        << expected_line << "\nWrite it anew with\n"
        << "    cmake --build build/release --target coverage_page";
  }
  EXPECT_FALSE(std::getline(written, line)) << "docs/applications.md is too long";
}

}  // namespace
