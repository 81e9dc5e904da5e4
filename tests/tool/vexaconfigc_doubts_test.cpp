// What vexaconfigc doubts, naming file and line, and compiles all the same.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vexaconfigc_fixture.h"
#include "vexaconfigc_sources.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

struct Doubt {
  const char* name;
  std::string source;
  int line;
  const char* words;
};

class VexaconfigcWarning : public testing::TestWithParam<Doubt> {};

TEST_P(VexaconfigcWarning, NamesFileAndLineAndWrites) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", GetParam().source);
  const ToolRun run = RunVexaconfigc({source, "--out", folder.Path("out.db")});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.output, HasSubstr(source + ":" + std::to_string(GetParam().line) +
                                    ": warning: " + GetParam().words));
  EXPECT_THAT(folder.FileNames(), ElementsAre("android", "out.db"));
}

// The feature on line 22 on a text column.
std::string TextFeatureOn(const std::string& column, std::string text) {
  const std::string integer = "column: n\n        kind: integer\n        min: -1\n";
  return text.replace(text.find(integer), integer.size(),
                      "column: " + column + "\n        kind: text\n        min: 0\n");
}

// The source with the column n declared otherwise, in the results, and judged by another feature.
std::string ColumnN(const std::string& type, const std::string& result_kind,
                    const std::string& feature) {
  std::string text = kSource;
  for (size_t place = 0; (place = text.find("n INTEGER", place)) != std::string::npos;) {
    text.replace(place, 9, "n " + type);
    place += 2 + type.size();
  }
  const std::string old_feature = "kind: integer\n        min: -1\n        max: 7\n";
  text.replace(text.find(old_feature), old_feature.size(),
               feature + "\n        min: 0\n        max: 7\n");
  const std::string result =
      "      - {column: n, type: INTEGER, kind: " + result_kind + "}\n    features:";
  return text.replace(text.find("    features:"), 13, result);
}

// The first layout without the unique column, which stands at the end of the second one.
std::string LateKeySource() {
  std::string text = kSource;
  const std::string result = "{column: a, type: TEXT, kind: text, unique: true}";
  text.replace(text.find(result), result.size(),
               "{column: z, type: TEXT, kind: text, unique: true}");
  return text;
}

const std::vector<Doubt>& Doubts() {
  static const std::vector<Doubt> doubts = {
      {"FeatureThatSwitchesANarrowLayoutOff", TextFeatureOn("z", kSource), 22,
       "the feature on the late column 'z' switches off the layout of 3 columns"},
      {"FeatureThatRefusesShortRecords", TextFeatureOn("c17", WideSource(20, 24, 2)), 22,
       "the feature on the late column 'c17' refuses the short records"},
      {"FeatureThatJudgesAnotherColumn", Changed("n INTEGER, z TEXT)", "m INTEGER, z TEXT)"), 16,
       "column 'm' of this layout stands at position 2, where the layout of 3 columns (line 14) "
       "has 'n', "
       "whose feature judges it"},
      {"FlexibleCountOfANarrowTable", Changed("flexible_cnt: 0", "flexible_cnt: 2"), 10,
       "flexible_cnt acts only on tables of at least 20 columns"},
      {"RealJudgedBeforeInteger", ColumnN("REAL", "real", "kind: real\n        or_kind: integer"),
       23, "kind real judges whole numbers first and reads those of 3 and 6 bytes as 0.0"},
      {"RealWithoutInteger", ColumnN("REAL", "real", "kind: real"), 23,
       "kind real without integer refuses whole numbers"},
      {"RealAsTheSecondKindOfText", ColumnN("REAL", "real", "kind: blob\n        or_kind: real"),
       23, "kind real without integer refuses whole numbers"},
      {"TextThatIsCleanedBeforeItIsRead",
       TextFeatureOn("a", Changed("- column: a\n", "- column: z\n")), 22,
       "kind text without bytes cleans the value"},
      {"BlobThatRefusesNull",
       [] {
         std::string text = ColumnN("BLOB", "blob", "kind: blob");
         return text.replace(text.find("min: 0\n"), 7, "min: 1\n");
       }(),
       23, "kind blob with a min above 0 refuses NULL"},
      {"IntegerResultOfARealColumn",
       ColumnN("REAL", "integer", "kind: integer\n        or_kind: real"), 21,
       "kind integer reads a fraction of this column as another number"},
      {"TextResultOfANumber", ColumnN("INTEGER", "text", "kind: integer"), 21,
       "a column declared as a number is read as bytes"},
      {"NumberResultOfAText", ColumnN("TEXT", "integer", "kind: blob\n        or_kind: text"), 21,
       "a column declared as text or blob is read as a number"},
      {"UniqueColumnThatWasAddedLater", LateKeySource(), 20,
       "the unique column 'z' is missing in the layout of 3 columns (line 14)"},
      {"UniqueColumnThatShortRecordsLack",
       [] {
         std::string text = WideSource(20, 24, 2);
         const std::string result = "{column: a, type: TEXT, kind: text, unique: true}";
         return text.replace(text.find(result), result.size(),
                             "{column: c18, type: TEXT, kind: text, unique: true}");
       }(),
       20, "the unique column 'c18' is missing in the short records"},
  };
  return doubts;
}

INSTANTIATE_TEST_SUITE_P(Sources, VexaconfigcWarning, testing::ValuesIn(Doubts()),
                         [](const auto& doubt) { return std::string(doubt.param.name); });

// What the doubts above ask for instead.
TEST(VexaconfigcWarning, IsNotGivenWhereKindsFit) {
  for (const std::string& source :
       {ColumnN("REAL", "real", "kind: integer\n        or_kind: real"),
        ColumnN("TEXT", "text", "kind: blob\n        or_kind: text"),
        ColumnN("BLOB", "blob", "kind: blob\n        not_null: true"),
        ColumnN("REAL", "integer", "kind: integer"),
        ColumnN("INTEGER", "text", "kind: blob\n        or_kind: text")}) {
    const ConfigFolder folder;
    const ToolRun run = RunVexaconfigc({folder.Write("android/sms.yaml", source)});
    EXPECT_EQ(run.exit_code, 0) << source;
    EXPECT_THAT(run.output, Not(HasSubstr("warning"))) << source;
  }
}

TEST(VexaconfigcWarning, IsNotGivenForADoubtThatTheSourceAnswers) {
  const ConfigFolder folder;
  std::string text = TextFeatureOn("z", kSource);
  text.replace(text.find("why: an enumeration"), 19,
               "why: an enumeration\n        despite: older rows are not wanted");
  const ToolRun run = RunVexaconfigc({folder.Write("android/sms.yaml", text)});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.output, "");
}

// A column that older layouts have and newer ones dropped: no row of the newer ones is older.
TEST(VexaconfigcWarning, IsNotGivenForAUniqueColumnOfAnOlderLayout) {
  const ConfigFolder folder;
  std::string text = LateKeySource();
  text.replace(text.find("from_version: 4"), 15, "from_version: 6");
  const ToolRun run = RunVexaconfigc({folder.Write("android/sms.yaml", text)});
  EXPECT_THAT(run.output, Not(HasSubstr("unique column")));
}

}  // namespace
