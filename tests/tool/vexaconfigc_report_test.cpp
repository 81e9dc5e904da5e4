// vexaconfigc --report: which feature of which layout judges which column of which other layout.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vexaconfigc_fixture.h"
#include "vexaconfigc_sources.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string ReportOf(const std::string& source) {
  const ConfigFolder folder;
  return RunVexaconfigc({folder.Write("android/sms.yaml", source), "--report"}).output;
}

// The second layout is live only, with other columns in the place of a and n.
std::string MovedLiveSource(const std::string& columns) {
  std::string text =
      Changed("- from_version: 5\n",
              "- from_version: 5\n        live_only: true\n        note: rewritten\n");
  const std::string old = "a TEXT, n INTEGER, z TEXT)";
  return text.replace(text.find(old), old.size(), columns + ")");
}

TEST(VexaconfigcReport, NumbersTheLayoutsOfATable) {
  const std::string report = ReportOf(MovedLiveSource("a TEXT, n INTEGER, z TEXT"));
  EXPECT_THAT(report, HasSubstr("android/sms (mmssms.db)\n  msg: 2 result columns, 2 features\n"));
  EXPECT_THAT(report, HasSubstr("    #1 3 columns (line 14)\n"));
  EXPECT_THAT(report, HasSubstr("    #2 4 columns (line 16, rewritten), only when live\n"));
  EXPECT_THAT(report, Not(HasSubstr("falls on")));
}

TEST(VexaconfigcReport, TellsWhatAFeatureOfACarvedLayoutJudgesInTheLiveOne) {
  const std::string report = ReportOf(MovedLiveSource("z TEXT, a TEXT, n INTEGER"));
  EXPECT_THAT(report, HasSubstr("    feature 'n' at position 2 of #1 falls on 'a' of #2\n"));
  EXPECT_THAT(report, HasSubstr("    feature 'a' at position 1 of #1 falls on 'z' of #2\n"));
  EXPECT_THAT(report, HasSubstr("    with the layout of 4 columns (line 16) live, carved rows are "
                                "misread in a, n\n"));
}

TEST(VexaconfigcReport, TellsWhatAFeatureOfTheLiveLayoutJudgesInACarvedOne) {
  const std::string report = ReportOf(MovedLiveSource("z TEXT, a TEXT, n INTEGER"));
  EXPECT_THAT(report, HasSubstr("    feature 'a' at position 2 of #2 falls on 'n' of #1\n"));
  EXPECT_THAT(report, HasSubstr("    feature 'n' at position 3 of #2 switches off #1\n"));
}

TEST(VexaconfigcReport, TellsWhatAFeatureJudgesBetweenCarvedLayouts) {
  const std::string report = ReportOf(Changed("n INTEGER, z TEXT)", "m INTEGER, z TEXT)"));
  EXPECT_THAT(report, HasSubstr("    feature 'n' at position 2 of #1 falls on 'm' of #2\n"));
}

TEST(VexaconfigcReport, TellsWhichFeaturesKeepANarrowLayoutOffWiderRows) {
  const std::string report = ReportOf(kSource);
  EXPECT_THAT(report, HasSubstr("    #1 fits the head of every wider row; what can refuse that: "
                                "n, a\n"));
  EXPECT_THAT(report, Not(HasSubstr("#2 fits")));
}

TEST(VexaconfigcReport, TellsWhichUniqueColumnsMayBeNull) {
  const std::string words =
      "    unique column 'a' has no feature with not_null: carved copies of live rows come back "
      "where it is NULL\n";
  EXPECT_THAT(ReportOf(kSource), Not(HasSubstr("unique column")));
  EXPECT_THAT(ReportOf(Changed("        not_null: true\n", "")), HasSubstr(words));
}

// Only one layout is live at a time, so that two of them never meet.
TEST(VexaconfigcReport, ComparesNoTwoLayoutsThatAreOnlyLive) {
  std::string text = MovedLiveSource("z TEXT, a TEXT, n INTEGER");
  text.replace(text.find("- from_version: 4\n"), 18,
               "- from_version: 4\n        live_only: true\n");
  EXPECT_THAT(ReportOf(text), Not(HasSubstr("falls on")));
}

TEST(VexaconfigcReport, TellsWhyALayoutIsUnreadable) {
  std::string text = MovedLiveSource("a VARCHAR(20), n INTEGER, z TEXT");
  text.replace(text.find("live_only: true"), 15, "live_only: true\n        unreadable: true");
  const std::string report = ReportOf(text);
  EXPECT_THAT(report, HasSubstr("    #2 4 columns (line 16, rewritten), unreadable: the CREATE "
                                "statement cannot be read: the type of column 'a' is no type "
                                "word\n"));
  EXPECT_THAT(report, Not(HasSubstr("error")));
}

}  // namespace
