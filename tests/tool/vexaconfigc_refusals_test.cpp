// What vexaconfigc refuses, naming file and line.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vexaconfigc_fixture.h"
#include "vexaconfigc_sources.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct Refusal {
  const char* name;
  std::string source;
  int line;
  const char* words;
};

std::string NameOf(const testing::TestParamInfo<Refusal>& info) { return info.param.name; }

class VexaconfigcRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(VexaconfigcRefusal, NamesFileAndLineAndWritesNothing) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", GetParam().source);
  const ToolRun run = RunVexaconfigc({source, "--out", folder.Path("out.db")});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.output, HasSubstr(source + ":" + std::to_string(GetParam().line) + ": error: "));
  EXPECT_THAT(LinesWith(run.output, ":" + std::to_string(GetParam().line) + ": error: "),
              HasSubstr(GetParam().words));
  EXPECT_THAT(folder.FileNames(), ElementsAre("android"));
}

const std::vector<Refusal>& KeysRefusals() {
  static const std::vector<Refusal> refusals = {
      {"UnknownKeyOfTheFile", Changed("database:", "databse:"), 3, "unknown key 'databse'"},
      {"UnknownKeyOfATable", Changed("    scan:", "    skan: 1\n    scan:"), 7,
       "unknown key 'skan' in a table"},
      {"UnknownKeyOfScan", Changed("small_table:", "tiny_table:"), 8, "unknown key 'tiny_table'"},
      {"UnknownKeyOfALayout", Changed("from_version: 4", "version: 4"), 14,
       "unknown key 'version'"},
      {"UnknownKeyOfAResult", Changed(", row_id: true", ", rowid: true"), 19,
       "unknown key 'rowid'"},
      {"UnknownKeyOfAFeature", Changed("max: 7", "maximum: 7"), 25, "unknown key 'maximum'"},
      {"RepeatedKey", Changed("max: 7", "min: 7"), 25, "'min' stands twice"},
      {"MissingKeyOfTheFile", Changed("database: mmssms.db\n", ""), 1, "missing key 'database'"},
      {"MissingKeyOfATable", Changed("name: msg\n    scan:", "scan:"), 6, "missing key 'name'"},
      {"MissingKeyOfScan", Changed("      deleted: true\n", ""), 8, "missing key 'deleted'"},
      {"MissingStatement",
       Changed("        sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT,"
               " n INTEGER)\n",
               ""),
       14, "missing key 'sql'"},
      {"MissingKind", Changed("kind: text, ", ""), 20, "missing key 'kind' in a result column"},
      {"MissingLimit", Changed("        max: 7\n", ""), 22, "missing key 'max' in a feature"},
      {"MissingReason", Changed("        why: an enumeration\n", ""), 22, "missing key 'why'"},
      {"EmptyValue", Changed("why: an enumeration", "why: ''"), 26, "is empty"},
      {"FlagThatIsNone", Changed("deleted: true", "deleted: yes"), 9, "must be true or false"},
      {"NumberThatIsNone", Changed("max: 7", "max: 7x"), 25, "must be a whole number"},
      {"NumberBeyond64Bits", Changed("max: 7", "max: 9223372036854775808"), 25, "64 bits"},
      {"NegativeVersion", Changed("from_version: 4", "from_version: -4"), 14, "between 0 and"},
      {"UnknownKind", Changed("kind: integer\n", "kind: number\n"), 23, "must be one of integer,"},
      {"UnknownResultType", Changed("type: TEXT, kind", "type: VARCHAR, kind"), 20,
       "must be one of INTEGER,"},
      {"ListThatIsNone", Changed("tables:\n  - name: msg\n", "tables:\n    name: msg\n"), 6,
       "must be a list"},
      {"NoYaml", Changed("database: mmssms.db", "database: [mmssms.db"), 4, "this is no YAML"},
      {"UnknownSystem", Changed("system: android", "system: symbian"), 1,
       "unknown system 'symbian'"},
      {"UnknownDataType", Changed("data_type: sms", "data_type: letters"), 2,
       "unknown data type 'letters'"},
      {"SystemOfAnotherFolder", Changed("system: android", "system: ios"), 1,
       "but the folder is 'android'"},
      {"DataTypeOfAnotherFile", Changed("data_type: sms", "data_type: note"), 2,
       "but the file is 'sms.yaml'"},
      {"UnknownKeyOfAGap", Changed("tables:", "not_covered: [{what: x, whi: y}]\ntables:"), 5,
       "unknown key 'whi' in a not_covered entry"},
      {"GapWithoutAReason", Changed("tables:", "not_covered: [{what: x}]\ntables:"), 5,
       "missing key 'why' in a not_covered entry"},
      {"EmptyApplicationName", Changed("database:", "application: ''\ndatabase:"), 3, "is empty"},
      {"LimitThatIsNull", Changed("max: 7", "max: null"), 25, "must be"},
      {"NoTablesAndNoReason",
       std::string(kSource).substr(0, std::string(kSource).find("tables:")) + "tables: []\n", 5,
       "a file without tables has to say in not_covered why"},
  };
  return refusals;
}

INSTANTIATE_TEST_SUITE_P(Keys, VexaconfigcRefusal, testing::ValuesIn(KeysRefusals()), NameOf);

const std::vector<Refusal>& LayoutsRefusals() {
  static const std::vector<Refusal> refusals = {
      {"TypeThatTheParserCannotRead", Changed("a TEXT, n INTEGER)", "a VARCHAR(20), n INTEGER)"),
       14, "the type of column 'a' is no type word"},
      {"LowerCaseInt", Changed("n INTEGER)", "n int)"), 14, "the type of column 'n'"},
      {"MixedCaseType", Changed("n INTEGER)", "n Integer)"), 14, "the type of column 'n'"},
      {"UnknownTypeOfALayoutThatIsOnlyLive",
       [] {
         std::string text = Changed("n INTEGER)", "n NUMERIC)");
         return text.replace(text.find("sql: "), 5, "live_only: true\n        sql: ");
       }(),
       14, "the type of column 'n' is no type word"},
      {"LineFeedThatGluesWords",
       Changed("sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER)\n",
               "sql: |\n          CREATE TABLE msg (_id INTEGER PRIMARY KEY, a\n          TEXT, n "
               "INTEGER)\n"),
       14, "reads as 2 columns, but SQLite makes other ones, 3 of them"},
      {"TabInsideAName",
       Changed("sql: CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER)",
               "sql: \"CREATE TABLE msg (_id INTEGER PRIMARY KEY, a\\tTEXT, n INTEGER)\""),
       14, "reads as 2 columns, but SQLite makes other ones, 3 of them"},
      {"UnreadableLayoutThatIsRead",
       Changed("- from_version: 5\n",
               "- from_version: 5\n        live_only: true\n        unreadable: true\n"),
       16, "the layout can be read: it is not unreadable"},
      {"UnreadableLayoutThatIsCarved",
       Changed("- from_version: 5\n", "- from_version: 5\n        unreadable: true\n"), 17,
       "an unreadable layout can only be live_only"},
      {"StatementWithoutColumns",
       Changed("CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n "
               "INTEGER)\n",
               "CREATE TABLE msg\n"),
       14, "no column list in brackets"},
      {"StatementThatSqliteRefuses", Changed("n INTEGER)", "a INTEGER)"), 14, "SQLite refuses"},
      {"StatementThatReadsOtherwise", Changed("n INTEGER)", "n INTEGER, foreign_key INTEGER)"), 14,
       "reads as 3 columns, but SQLite makes other ones, 4 of them"},
      {"StatementOfAnotherTable", Changed("CREATE TABLE msg", "CREATE TABLE mgs"), 14,
       "makes another table than 'msg'"},
      {"TextKeyInFrontOfACarvedTable",
       Changed("_id INTEGER PRIMARY KEY, a", "_id TEXT PRIMARY KEY, a"), 14,
       "is a primary key but no INTEGER"},
      {"KeyInFrontThatIsNotTheRowId",
       Changed("_id INTEGER PRIMARY KEY, a", "_id INT PRIMARY KEY, a"), 14,
       "SQLite keeps its value in the record"},
      {"NameInFrontThatReadsAsAKey",
       Changed("_id INTEGER PRIMARY KEY, a TEXT, n INTEGER)",
               "primary_key_id INTEGER, a TEXT, n INTEGER)"),
       14, "SQLite keeps its value in the record"},
      {"TableWithoutRowIds", Changed("n INTEGER)", "n INTEGER) WITHOUT ROWID"), 14,
       "WITHOUT ROWID cannot be carved"},
      {"TwoLayoutsOfOneWidth", Changed("n INTEGER, z TEXT)", "n INTEGER)"), 16,
       "two layouts of one width"},
      {"NoLayout",
       Changed("name: msg",
               "name: empty\n    scan: {small_table: false, deleted: false, "
               "flexible_cnt: 0, guess_row_id: false, order_by_rowid: true}\n    layouts:"
               " []\n    results: []\n  - name: msg"),
       6, "has no layout"},
      {"MovedResultColumn", Changed("a TEXT, n INTEGER, z TEXT)", "z TEXT, n INTEGER, a TEXT)"), 16,
       "moves the result column 'a' to position 3; in the layout of 3 columns (line 14) it stands "
       "at 1"},
      {"MovedFeaturedColumn", Changed("n INTEGER, z TEXT)", "z TEXT, n INTEGER)"), 16,
       "moves the featured column 'n' to position 3"},
      {"OtherColumnInAResultColumnsPlace",
       Changed("a TEXT, n INTEGER, z TEXT)", "b TEXT, n INTEGER, z TEXT)"), 16,
       "column 'b' of this layout stands at position 1, where the layout of 3 columns (line 14) "
       "has "
       "'a', a result column"},
      {"FlexibleCountThatMergesLayouts", WideSource(20, 22, 3), 10, "it may be 2 at most"},
  };
  return refusals;
}

INSTANTIATE_TEST_SUITE_P(Layouts, VexaconfigcRefusal, testing::ValuesIn(LayoutsRefusals()), NameOf);

const std::vector<Refusal>& ColumnsRefusals() {
  static const std::vector<Refusal> refusals = {
      {"TwoTablesOfOneName",
       std::string(kSource) + std::string(kSource).substr(std::string(kSource).find("  - name")),
       36, "table 'msg' stands twice, first on line 6"},
      {"ResultColumnOfNoLayout", Changed("column: a, type", "column: b, type"), 20,
       "no layout holds result column 'b'"},
      {"ResultColumnInAnotherCase", Changed("column: a, type", "column: A, type"), 20,
       "no layout holds result column 'A'"},
      {"DuplicateResultColumn",
       Changed("    features:", "      - {column: a, type: TEXT, kind: text}\n    features:"), 21,
       "result column 'a' stands twice, first on line 20"},
      {"TwoRowIds", Changed("unique: true}", "unique: true, row_id: true}"), 20,
       "more than one row id column: '_id' on line 19"},
      {"RowIdThatIsNoInteger", Changed("kind: integer, row_id", "kind: text, row_id"), 19,
       "must be of kind integer"},
      {"AliasThatIsNotMarked", Changed("kind: integer, row_id: true", "kind: integer"), 19,
       "mark it row_id: true"},
      {"GuessingWithoutARowId",
       Changed("      - {column: _id, type: INTEGER, kind: integer, row_id: true}\n", ""), 11,
       "guess_row_id needs a result column"},
      {"NoUniqueColumn", Changed(", unique: true", ""), 6, "has no unique column"},
      {"TableNameThatSqlNeedsQuoted", WordTableSource("order"), 6,
       "SQLite refuses the result table 'order'"},
  };
  return refusals;
}

INSTANTIATE_TEST_SUITE_P(Columns, VexaconfigcRefusal, testing::ValuesIn(ColumnsRefusals()), NameOf);

const std::vector<Refusal>& FeaturesRefusals() {
  static const std::vector<Refusal> refusals = {
      {"AnswerToNoDoubt", Changed("max: 7", "max: 7\n        despite: it is small"), 26,
       "nothing is doubtful about this entry"},
      {"FeatureOfNoLayout", Changed("column: n", "column: m"), 22, "no layout holds the column"},
      {"SecondFeature", Changed("      - column: a\n", "      - column: n\n"), 27,
       "a second feature on 'n' has no effect; the first is on line 22"},
      {"FeatureOnTheRowId", Changed("column: n", "column: _id"), 22, "sees the number 0"},
      {"KindThatTheDeclaredTypeShutsOut", Changed("kind: integer\n", "kind: text\n"), 22,
       "lets no value of this kind through (layout on line 14)"},
      {"EmptyRange", Changed("max: 7", "max: -7"), 22, "min lies above max"},
      {"NegativeLength", Changed("min: 1\n", "min: -1\n"), 27, "a length has no negative min"},
      {"NegativeLengthOfTheSecondKind", Changed("min: -1\n", "or_kind: text\n        min: -1\n"),
       22, "a length has no negative min"},
      {"RepeatedKind", Changed("or_kind: blob", "or_kind: text"), 27, "or_kind repeats kind"},
      {"BytesOfANumber", Changed("max: 7", "max: 7\n        bytes: a"), 26, "act on text and blob"},
      {"ForbiddenBytesAlone", Changed("        bytes: \"'a'~'f'\"\n", ""), 33,
       "not_bytes has no effect without bytes"},
      {"NoFeatureAtAll", std::string(kSource).substr(0, std::string(kSource).find("    features:")),
       6, "without any feature"},
  };
  return refusals;
}

INSTANTIATE_TEST_SUITE_P(Features, VexaconfigcRefusal, testing::ValuesIn(FeaturesRefusals()),
                         NameOf);

const std::vector<Refusal>& ByteSetsRefusals() {
  static const std::vector<Refusal> refusals = {
      {"ByteSetBareZeroRange", ByteSet("0~9"), 33, "a bare 0 begins a hexadecimal byte"},
      {"ByteSetHexadecimalRange", ByteSet("0x30~0x39"), 33, "cannot be written in hexadecimal"},
      {"ByteSetRangeToTheHighestByte", ByteSet("0x80~0xFF"), 33, "ends at the byte 0xFF"},
      {"ByteSetLetterRangeToTheHighestByte", ByteSet("a~0xff"), 33, "ends at the byte 0xFF"},
      {"ByteSetBareZero", ByteSet("0"), 33, "the byte of value 0"},
      {"ByteSetSeveralBytes", ByteSet("ab"), 33, "only the last byte would count"},
      {"ByteSetQuotedWord", ByteSet("'ab'"), 33, "only the last byte would count"},
      {"ByteSetEmptyItem", ByteSet("a,,b"), 33, "an empty item"},
      {"ByteSetLeadingComma", ByteSet(",a"), 33, "an empty item"},
      {"ByteSetTrailingComma", ByteSet("0x41,"), 33, "an empty item"},
      {"ByteSetLoneQuote", ByteSet("'"), 33, "a quote is not closed"},
      {"ByteSetDoubledQuote", ByteSet("''"), 33, "write 0x27"},
      {"ByteSetShortHexadecimal", ByteSet("0x4"), 33, "needs the form 0x41"},
      {"ByteSetLongHexadecimal", ByteSet("0x141"), 33, "needs the form 0x41"},
      {"ByteSetNoHexadecimal", ByteSet("0xZZ"), 33, "needs the form 0x41"},
      {"ByteSetBackwardRange", ByteSet("'f'~'a'"), 33, "ends before it begins"},
      {"ByteSetOpenRange", ByteSet("'a'~"), 33, "does not go from one byte to one byte"},
      {"ByteSetNotAscii", ByteSet("'\xC3\xA9'"), 33, "the last byte"},
      {"ByteSetForbiddenBytes", Changed("not_bytes: \"'b'\"", "not_bytes: bc"), 34,
       "only the last byte would count"},

  };
  return refusals;
}

INSTANTIATE_TEST_SUITE_P(ByteSets, VexaconfigcRefusal, testing::ValuesIn(ByteSetsRefusals()),
                         NameOf);

}  // namespace
