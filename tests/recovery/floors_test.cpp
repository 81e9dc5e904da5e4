#include "recovery/floors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scan_fixture.h"
#include "support/temp_folder.h"

namespace recovery {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TableReport Report(size_t standing, size_t recovered, size_t carved, size_t false_rows) {
  TableReport report{"ios", "note", "n.sqlite", "ZNOTE", 0, "iOS 9", 20, 9, true, 1, 0, {}, {}, {}};
  report.mixed.live = report.mixed.live_found = 500;
  report.mixed.standing = standing;
  report.mixed.recovered = recovered;
  report.mixed.carved = carved;
  report.mixed.false_rows = false_rows;
  return report;
}

class FloorsTest : public ::testing::Test {
 protected:
  std::vector<std::string> Faults(const std::string& text, const TableReport& report) {
    WriteBytes(path_, text);
    return Floors::Read(path_).Faults("ios/note", {report});
  }

  std::string Refusal(const std::string& text) {
    WriteBytes(path_, text);
    try {
      Floors::Read(path_);
    } catch (const std::runtime_error& fault) {
      return fault.what();
    }
    return "";
  }

  TempFolder folder_;
  std::string path_ = folder_.File("floors.yaml");
};

TEST_F(FloorsTest, TheCommonFloor) {
  EXPECT_THAT(Faults("{}", Report(200, 190, 200, 2)), IsEmpty());
  EXPECT_THAT(Faults("{}", Report(200, 189, 200, 2)), ElementsAre(HasSubstr("recall 189 of 200")));
  EXPECT_THAT(Faults("{}", Report(200, 190, 200, 3)),
              ElementsAre(HasSubstr("false rows 3 of 200")));
  EXPECT_THAT(Faults("{}", Report(10, 9, 9, 1)), IsEmpty());  // single rows decide nothing
  EXPECT_THAT(Faults("{}", Report(10, 8, 9, 2)).size(), 2U);
  TableReport lost = Report(0, 0, 0, 0);
  lost.mixed.live_found = 499;
  EXPECT_THAT(Faults("{}", lost), ElementsAre(HasSubstr("live rows found 499 of 500")));
  TableReport extra = Report(0, 0, 0, 0);
  extra.clean.carved = 1;
  EXPECT_THAT(Faults("{}", extra), ElementsAre(HasSubstr("clean database 1")));
}

TEST_F(FloorsTest, LowerFloorsOfTablesAndLayouts) {
  EXPECT_THAT(Faults("ios/note: {ZNOTE: {recall: 0.5, why: x}}", Report(200, 100, 100, 0)),
              IsEmpty());
  EXPECT_THAT(Faults("ios/note: {ZNOTE: {recall: 0.51, why: x}}", Report(200, 97, 100, 0)).size(),
              1U);
  const std::string layout = "ios/note: {ZNOTE: {layouts: {iOS 9: {precision: 0.8, why: x}}}}";
  EXPECT_THAT(Faults(layout, Report(200, 200, 200, 40)), IsEmpty());
  EXPECT_THAT(Faults(layout, Report(200, 200, 200, 41)).size(), 1U);
}

TEST_F(FloorsTest, FloorsOfNothing) {
  const TableReport report = Report(1, 1, 1, 0);
  EXPECT_THAT(Faults("ios/note: {ZNOT: {recall: 0.5, why: x}}", report),
              ElementsAre(HasSubstr("ios/note/ZNOT, which does not exist")));
  EXPECT_THAT(Faults("ios/note: {ZNOTE: {layouts: {iOS 8: {recall: 0.5, why: x}}}}", report),
              ElementsAre(HasSubstr("iOS 8, which does not exist")));
  EXPECT_THAT(Faults("ios/sms: {chat: {recall: 0.5, why: x}}", report), IsEmpty());
  EXPECT_THAT(Faults("ios/note: {ZNOTE: {covered: false, why: x}}", report),
              ElementsAre(HasSubstr("is configured, though")));
  TableReport left_out = report;
  left_out.covered = false;
  EXPECT_THAT(Faults("{}", left_out), ElementsAre(HasSubstr("is not configured")));
  EXPECT_THAT(Faults("ios/note: {ZNOTE: {covered: false, why: x}}", left_out), IsEmpty());
}

TEST_F(FloorsTest, LayoutsShareTheReasonOfTheirTable) {
  const std::string text = "ios/note: {ZNOTE: {why: x, layouts: {iOS 9: {recall: 0.5}}}}";
  EXPECT_THAT(Faults(text, Report(200, 100, 100, 0)), IsEmpty());
}

TEST_F(FloorsTest, SuggestedFloorsPassOnceTheyHaveAReason) {
  TableReport report = Report(300, 200, 300, 100);
  report.clean.carved = 4;
  std::string text = SuggestedFloors({report});
  EXPECT_THAT(Refusal(text), HasSubstr("a floor needs a 'why'"));
  text.replace(text.find("why: \"\""), 7, "why: x");
  EXPECT_THAT(Faults(text, report), IsEmpty());
  EXPECT_EQ(SuggestedFloors({Report(200, 200, 200, 0)}), "");
}

TEST_F(FloorsTest, RefusesWhatItDoesNotUnderstand) {
  EXPECT_THAT(Refusal("ios/note: {ZNOTE: {recall: 0.5}}"), HasSubstr(":1: a floor needs a 'why'"));
  EXPECT_THAT(Refusal("ios/note:\n  ZNOTE: {recal: 0.5, why: x}"),
              HasSubstr(":2: unknown key 'recal'"));
  EXPECT_THAT(Refusal("ios/note: {ZNOTE: [x]}"), HasSubstr("a map is expected here"));
  EXPECT_EQ(Floors::Read(path_ = (WriteBytes(path_, "ios/a: {t: {live: 0, why: x}}"), path_))
                .Applications(),
            std::vector<std::string>{"ios/a"});
}

}  // namespace
}  // namespace recovery
