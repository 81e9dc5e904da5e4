// vexaconfigc as a program: what it writes, and how it is called.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "vexaconfigc_fixture.h"
#include "vexaconfigc_sources.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(Vexaconfigc, ReportsEveryFaultOfAFileInOneRun) {
  const ConfigFolder folder;
  std::string text = Changed("max: 7", "max: many");
  text.replace(text.find("column: a, type"), 15, "column: b, type");
  const std::string source = folder.Write("android/sms.yaml", text);
  const ToolRun run = RunVexaconfigc({source});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.output, HasSubstr("sms.yaml:20: error:"));
  EXPECT_THAT(run.output, HasSubstr("sms.yaml:25: error:"));
  EXPECT_LT(run.output.find(":20:"), run.output.find(":25:"));
}

TEST(Vexaconfigc, WritesTheRowsOfASource) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", kSource);
  const std::string database = folder.Path("out.db");
  const ToolRun run = RunVexaconfigc({source, "--out", database});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_THAT(QueryRows(database,
                        "select system_type, data_type, table_name, is_small_table,"
                        " is_virtual_table, scan_type, flexible_cnt, need_guess_row_id,"
                        " need_order_by_rowid from scan_table_info"),
              ElementsAre("android|sms|msg|i0|i0|i0|i0|i1|i1"));
  EXPECT_THAT(
      QueryRows(database, "select system_type, data_type, is_scan_database from scan_type_info"),
      ElementsAre("android|sms|i1"));
  EXPECT_THAT(
      QueryRows(database,
                "select system_type, data_type, system_version, table_name, sql"
                " from create_table_sql"),
      ElementsAre(
          "android|sms|i4|msg|CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER)",
          "android|sms|i5|msg|"
          "CREATE TABLE msg (_id INTEGER PRIMARY KEY, a TEXT, n INTEGER, z TEXT)"));
  EXPECT_THAT(
      QueryRows(database,
                "select system_type, data_type, table_name, field_name, is_not_null,"
                " field_type, min, max, item_range, item_not_exist_value,"
                " field_type_candidate from field_features"),
      ElementsAre("i0|sms|msg|n|i0|i0|i-1|i7|||i-1", "i0|sms|msg|a|i1|i2|i1|i20|'a'~'f'|'b'|i3"));
  EXPECT_THAT(
      QueryRows(database,
                "select system_type, data_type, table_name, field_name, field_type_text,"
                " field_type, is_unique_field, is_row_id_field from result_field_info"),
      ElementsAre("android|sms|msg|_id|INTEGER|i0|i0|i1", "android|sms|msg|a|TEXT|i2|i1|i0"));
}

TEST(Vexaconfigc, WritesTheCodeOfIosIntoTheFeaturesAndItsNameElsewhere) {
  const ConfigFolder folder;
  const std::string source =
      folder.Write("ios/sms.yaml", Changed("system: android", "system: ios"));
  const std::string database = folder.Path("out.db");
  EXPECT_EQ(RunVexaconfigc({source, "--out", database}).exit_code, 0);
  EXPECT_THAT(QueryRows(database, "select distinct system_type from field_features"),
              ElementsAre("i1"));
  EXPECT_THAT(QueryRows(database, "select distinct system_type from result_field_info"),
              ElementsAre("ios"));
}

TEST(Vexaconfigc, KeepsATableOutOfTheDeletedScan) {
  const ConfigFolder folder;
  std::string text = Changed("deleted: true", "deleted: false");
  text.replace(text.find("scan_main_file: true"), 20, "scan_main_file: false");
  const std::string database = folder.Path("out.db");
  EXPECT_EQ(RunVexaconfigc({folder.Write("android/sms.yaml", text), "--out", database}).exit_code,
            0);
  EXPECT_THAT(QueryRows(database, "select scan_type from scan_table_info"), ElementsAre("i1"));
  EXPECT_THAT(QueryRows(database, "select is_scan_database from scan_type_info"),
              ElementsAre("i0"));
}

TEST(Vexaconfigc, WritesNoLayoutThatIsLiveOnlyButKnowsItsColumns) {
  const ConfigFolder folder;
  std::string text = Changed("- from_version: 5\n", "- from_version: 5\n        live_only: true\n");
  text.replace(text.find("a TEXT, n INTEGER, z TEXT)"), 26, "n INTEGER, a TEXT, z TEXT)");
  const std::string database = folder.Path("out.db");
  const ToolRun run =
      RunVexaconfigc({folder.Write("android/sms.yaml", text), "--out", database, "--report"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(QueryRows(database, "select system_version from create_table_sql"),
              ElementsAre("i4"));
  EXPECT_THAT(run.output, HasSubstr("with the layout of 4 columns (line 16) live, carved rows are "
                                    "misread in a, n"));
}

TEST(Vexaconfigc, AcceptsByteSetsThatReadAsTheySeem) {
  const std::vector<std::string> sets = {"a",       "'a'",       "a~z", "'0'~'9','a'~'f'",
                                         "0x41",    "0X4f,0x00", "','", "'~'",
                                         "' '~'~'", "'0'",       "1~9", "'x',0x27"};
  for (const std::string& set : sets) {
    const ConfigFolder folder;
    const ToolRun run = RunVexaconfigc({folder.Write("android/sms.yaml", ByteSet(set))});
    EXPECT_EQ(run.exit_code, 0) << set << "\n" << run.output;
  }
}

TEST(Vexaconfigc, GivesTheSameBytesWhateverTheOrderOfTheSources) {
  const ConfigFolder folder;
  const std::string sms = folder.Write("android/sms.yaml", kSource);
  const std::string note = folder.Write("ios/note.yaml", [] {
    std::string text = Changed("system: android", "system: ios");
    return text.replace(text.find("data_type: sms"), 14, "data_type: note");
  }());
  EXPECT_EQ(RunVexaconfigc({sms, note, "--out", folder.Path("1.db")}).exit_code, 0);
  EXPECT_EQ(RunVexaconfigc({note, sms, "--out", folder.Path("2.db")}).exit_code, 0);
  EXPECT_EQ(RunVexaconfigc({folder.Path("."), "--out", folder.Path("3.db")}).exit_code, 0);
  const std::string bytes = FileBytes(folder.Path("1.db"));
  EXPECT_THAT(bytes, Not(IsEmpty()));
  EXPECT_EQ(bytes, FileBytes(folder.Path("2.db")));
  EXPECT_EQ(bytes, FileBytes(folder.Path("3.db")));
  EXPECT_THAT(QueryRows(folder.Path("1.db"), "select data_type from scan_type_info"),
              ElementsAre("sms", "note"));
}

TEST(Vexaconfigc, ReplacesAnEarlierDatabaseAndItsSideFiles) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", kSource);
  folder.Write("out.db", "old");
  folder.Write("out.db-wal", "old");
  folder.Write("out.db-shm", "old");
  EXPECT_EQ(RunVexaconfigc({source, "--out", folder.Path("out.db")}).exit_code, 0);
  EXPECT_THAT(folder.FileNames(), ElementsAre("android", "out.db"));
  EXPECT_THAT(QueryRows(folder.Path("out.db"), "pragma integrity_check"), ElementsAre("ok"));
  EXPECT_THAT(QueryRows(folder.Path("out.db"), "pragma journal_mode"), ElementsAre("delete"));
}

TEST(Vexaconfigc, KeepsAnEarlierDatabaseWhenASourceIsRefused) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", Changed("max: 7", "max: x"));
  folder.Write("out.db", "old");
  EXPECT_EQ(RunVexaconfigc({source, "--out", folder.Path("out.db")}).exit_code, 1);
  EXPECT_EQ(FileBytes(folder.Path("out.db")), "old");
  EXPECT_THAT(folder.FileNames(), ElementsAre("android", "out.db"));
}

TEST(Vexaconfigc, RefusesTwoFilesForOneApplication) {
  const ConfigFolder folder;
  const std::string first = folder.Write("a/android/sms.yaml", kSource);
  const std::string second = folder.Write("b/android/sms.yaml", kSource);
  const ToolRun run = RunVexaconfigc({first, second});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.output, HasSubstr(second + ":1: error: a second file for android/sms"));
}

TEST(Vexaconfigc, TellsWrongCallsFromRefusedSources) {
  const ConfigFolder folder;
  const std::string source = folder.Write("android/sms.yaml", kSource);
  EXPECT_EQ(RunVexaconfigc({}).exit_code, 2);
  EXPECT_EQ(RunVexaconfigc({folder.Path("missing.yaml")}).exit_code, 2);
  EXPECT_EQ(RunVexaconfigc({"--wrong", source}).exit_code, 2);
  EXPECT_EQ(RunVexaconfigc({"--help"}).exit_code, 0);
  EXPECT_EQ(RunVexaconfigc({source, "--out", folder.Path("no/folder/out.db")}).exit_code, 1);
  std::filesystem::create_directory(folder.Path("empty"));
  EXPECT_EQ(RunVexaconfigc({folder.Path("empty")}).exit_code, 1);
}

TEST(Vexaconfigc, CompilesTheShippedSourcesWithoutAWord) {
  const ConfigFolder folder;
  const std::string database = folder.Path("out.db");
  const ToolRun run = RunVexaconfigc({VEXA_SOURCE_DIR "/config", "--out", database});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.output, IsEmpty());
  EXPECT_THAT(QueryRows(database,
                        "select data_type from scan_type_info where system_type = 'android' and"
                        " data_type in ('contact', 'sms') and is_scan_database = 1"),
              ElementsAre("contact", "sms"));
  EXPECT_THAT(QueryRows(database,
                        "select table_name from scan_table_info t where not exists (select 1 from"
                        " result_field_info r where r.system_type = t.system_type and r.data_type ="
                        " t.data_type and r.table_name = t.table_name and r.is_unique_field = 1)"),
              IsEmpty());
}

TEST(Vexaconfigc, BuiltDatabaseIsThatOfTheShippedSources) {
  const ConfigFolder folder;
  const std::string database = folder.Path("out.db");
  ASSERT_EQ(RunVexaconfigc({VEXA_SOURCE_DIR "/config", "--out", database}).exit_code, 0);
  for (const char* table : {"scan_table_info", "scan_type_info", "create_table_sql",
                            "field_features", "result_field_info"}) {
    const std::string all = std::string("select * from ") + table;
    EXPECT_EQ(QueryRows(database, all), QueryRows(VEXA_BUILD_DIR "/VexaConfiger.db", all)) << table;
  }
}

}  // namespace
