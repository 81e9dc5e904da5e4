#include "scansqlite/schema/schema_candidates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/scan_sqlite_probe.h"
#include "support/temp_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// "create table t (c0 TEXT, c1 TEXT, ...)"
std::string TableOf(int columns, const std::string& prefix = "c", const std::string& type = "TEXT",
                    const std::string& table = "t") {
  std::string sql = "create table " + table + " (";
  for (int i = 0; i < columns; ++i) {
    sql += (i == 0 ? "" : ", ") + prefix + std::to_string(i) + " " + type;
  }
  return sql + ")";
}

// Width and origin of each candidate: a live one counts as its width, a configured one negative.
std::vector<int> WidthsOf(const TableSchemaInfo& table) {
  std::vector<int> widths;
  for (const SchemaCandidate& candidate : table.candidates) {
    const int width = static_cast<int>(candidate.columns.size());
    widths.push_back(candidate.from_live_db ? width : -width);
  }
  return widths;
}

TableSchemaInfo LiveTable(const std::string& sql, int32_t flexible_cnt = 0) {
  TableSchemaInfo table;
  table.table_name = "t";
  table.flexible_cnt = flexible_cnt;
  table.candidates.push_back({true, ParseCreateSql("t", sql)});
  return table;
}

struct MergeCase {
  const char* name;
  std::string live;
  std::vector<std::string> texts;
  int32_t flexible_cnt;
  std::vector<int> expected;
};

TEST(MergeSchemaTexts, KeepsOneLayoutForEachWidthAndMergesWideOnes) {
  const MergeCase cases[] = {
      {"no texts", TableOf(3), {}, 0, {3}},
      {"empty texts are passed over", TableOf(3), {"", ""}, 0, {3}},
      {"first of two with the same width stays",
       TableOf(3),
       {TableOf(12, "a"), TableOf(12, "b")},
       0,
       {3, -12}},
      {"same width as the live table, other columns", TableOf(12), {TableOf(12, "other")}, 0, {12}},
      {"an unreadable text is a list of 0 columns", TableOf(3), {"rubbish"}, 0, {3, 0}},
      {"only one list of 0 columns stays", TableOf(3), {"rubbish", "(", ")("}, 0, {3, 0}},
      {"an unreadable text beside an empty live layout", "rubbish", {"more rubbish"}, 0, {0}},
      {"wider prefix within reach", TableOf(25), {TableOf(27)}, 3, {-27}},
      {"wider prefix out of reach", TableOf(25), {TableOf(27)}, 2, {25, -27}},
      {"narrower prefix within reach keeps the live one", TableOf(27), {TableOf(25)}, 3, {27}},
      {"shorter list below 20 columns", TableOf(19), {TableOf(21)}, 9, {19, -21}},
      {"shorter list of 20 columns", TableOf(20), {TableOf(21)}, 2, {-21}},
      {"other names", TableOf(25), {TableOf(27, "x")}, 3, {25, -27}},
      {"other types", TableOf(25), {TableOf(27, "c", "BLOB")}, 3, {25, -27}},
      {"flexible count 0", TableOf(25), {TableOf(26)}, 0, {25, -26}},
      {"flexible count 1", TableOf(25), {TableOf(26)}, 1, {25, -26}},
      {"flexible count below 0", TableOf(25), {TableOf(26)}, -5, {25, -26}},
      {"layouts between narrowest and widest go too",
       TableOf(26),
       {TableOf(25), TableOf(27, "x"), TableOf(28)},
       4,
       {-28}},
      {"a middle one alone decides nothing",
       TableOf(25),
       {TableOf(26, "x"), TableOf(27)},
       3,
       {-27}},
  };
  for (const MergeCase& c : cases) {
    SCOPED_TRACE(c.name);
    TableSchemaInfo table = LiveTable(c.live, c.flexible_cnt);
    MergeSchemaTexts(c.texts, table);
    EXPECT_EQ(WidthsOf(table), c.expected);
  }
}

TEST(MergeSchemaTexts, ThePrimaryFlagIsNotCompared) {
  std::string narrow = TableOf(25);
  narrow.replace(narrow.find("c0 TEXT"), 7, "c0 TEXT PRIMARY KEY");
  TableSchemaInfo table = LiveTable(narrow, 3);
  ASSERT_TRUE(table.candidates.front().columns.front().is_primary_key);
  MergeSchemaTexts({TableOf(27)}, table);
  EXPECT_THAT(WidthsOf(table), ElementsAre(-27));
}

// A database with these statements run.
class LiveSchema : public testing::Test {
 protected:
  void Run(const std::string& sql) {
    if (connection_.handle() == nullptr) connection_.Open(folder_.File("db"));
    ASSERT_EQ(sqlite3_exec(connection_.handle(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection_.handle());
  }

  TempFolder folder_;
  SqliteConnection connection_;
};

TEST_F(LiveSchema, BecomesTheFirstCandidate) {
  Run("create table t (id INTEGER PRIMARY KEY, body TEXT)");
  TableSchemaInfo table;
  ASSERT_TRUE(LoadLiveSchema(connection_, "t", table));
  EXPECT_EQ(table.table_name, "t");
  EXPECT_THAT(WidthsOf(table), ElementsAre(2));
  EXPECT_EQ(table.candidates.front().columns[1].name, "body");
}

TEST_F(LiveSchema, ViewsIndexesAndOtherSpellingsAreMissingTables) {
  Run("create table t (a TEXT); create view v as select a from t; create index i on t(a)");
  for (const char* name : {"v", "i", "T", "absent", ""}) {
    SCOPED_TRACE(name);
    LogCapture log;
    TableSchemaInfo table;
    EXPECT_FALSE(LoadLiveSchema(connection_, name, table));
    EXPECT_THAT(table.candidates, IsEmpty());
    EXPECT_THAT(log.Lines(), IsEmpty());
  }
}

struct NumberedCase {
  const char* table;
  bool found;
};

TEST_F(LiveSchema, TheNumberedTableIsFoundByTheGrowingName) {
  const NumberedCase cases[] = {{"fts_message_table_0", true},
                                {"fts_message_table_01", true},
                                {"fts_message_table_0123", true},
                                {"fts_message_table_1", false},
                                {"fts_message_table_", false}};
  for (const NumberedCase& c : cases) {
    SCOPED_TRACE(c.table);
    Run(TableOf(4, "c", "TEXT", c.table));
    TableSchemaInfo table;
    EXPECT_EQ(LoadLiveSchema(connection_, "fts_message_table_", table), c.found);
    EXPECT_EQ(table.table_name, "fts_message_table_");
    EXPECT_EQ(table.candidates.size(), c.found ? 1U : 0U);
    Run(std::string("drop table ") + c.table);
  }
}

TEST_F(LiveSchema, ATextThatCannotBeReadKeepsACandidateWithoutColumns) {
  Run("create table t as select 1 as a");  // SQLite writes the text anew, without types
  Run("pragma writable_schema=on; update sqlite_master set sql='create table t' where name='t'");
  TableSchemaInfo table;
  ASSERT_TRUE(LoadLiveSchema(connection_, "t", table));
  EXPECT_THAT(WidthsOf(table), ElementsAre(0));
}

TEST_F(LiveSchema, TablesThatTheDatabaseLacksAreDroppedWithoutAWord) {
  Run("create table here (a TEXT, b TEXT)");
  connection_.Close();
  ScanSqliteProbe probe{ScanContext{}};
  probe.OpenConfig(folder_.File("config"));
  probe.working_db_path() = folder_.File("db");
  ScanTableInfo absent;
  absent.table_name = "absent";
  ScanTableInfo here;
  here.table_name = "here";
  here.is_small_table = true;
  here.is_virtual_table = true;
  here.scan_type = 2;
  here.flexible_cnt = 3;
  here.need_guess_row_id = 4;
  here.need_order_by_rowid = 5;
  LogCapture log;
  std::vector<TableSchemaInfo> out;
  ASSERT_TRUE(probe.InitColumnInfo({absent, here}, out));
  ASSERT_EQ(out.size(), 1U);
  EXPECT_EQ(out[0].table_name, "here");
  EXPECT_TRUE(out[0].is_small_table);
  EXPECT_TRUE(out[0].is_virtual_table);
  EXPECT_EQ(out[0].scan_type, 2);
  EXPECT_EQ(out[0].flexible_cnt, 3);
  EXPECT_EQ(out[0].need_guess_row_id, 4);
  EXPECT_EQ(out[0].need_order_by_rowid, 5);
  EXPECT_THAT(WidthsOf(out[0]), ElementsAre(2));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(LiveSchema, AWorkingDatabaseThatCannotBeOpenedIsReported) {
  ScanSqliteProbe probe{ScanContext{}};
  probe.OpenConfig(folder_.File("config"));
  probe.working_db_path() = folder_.File("no/such/folder/db");
  LogCapture log;
  std::vector<TableSchemaInfo> out;
  EXPECT_FALSE(probe.InitColumnInfo({}, out));
  EXPECT_THAT(log.Lines(),
              ElementsAre(LogLine{3, "[src/scansqlite], at 2346 line, open database fail"}));
}

}  // namespace
