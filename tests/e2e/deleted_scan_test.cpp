// Deleted records in the main file: where they lie, and in which layouts.
#include <vexasqlitesdk.h>

#include <filesystem>

#include "support/scan_fixture.h"

namespace fs = std::filesystem;

namespace {

// The messages whose text still stands in the bytes of a file.
std::vector<std::string> StandingIn(const std::string& path, int count) {
  const std::string bytes = ReadBytes(path);
  std::vector<std::string> standing;
  for (const std::string& body : MessageBodies(1, count)) {
    if (bytes.find(body) != std::string::npos) standing.push_back(body);
  }
  return standing;
}

class DeletedScan : public ScanFixture {
 protected:
  // Rows 1 to `count` in a file without a log, some of them deleted.
  void MakeMessages(int count, const std::string& deletion, const std::string& first = "") {
    fs::remove(source());
    SqliteMaker db(source());
    if (!first.empty()) db.Run(first);
    db.Run(MessageTable());
    AddMessages(db, 1, count);
    db.Run(deletion);
  }
};

TEST_F(DeletedScan, RowsInFreeblocksComeBack) {
  MakeMessageConfig(config());
  MakeMessages(30, "DELETE FROM message WHERE _id % 2 = 0");
  EXPECT_EQ(Found(kLive).size(), 15U);
  EXPECT_EQ(Found(kDeleted), MessageBodies(1, 30));
  EXPECT_EQ(Found(kAll), MessageBodies(1, 30));
}

TEST_F(DeletedScan, RowsInFreePagesComeBack) {
  MakeMessageConfig(config());
  MakeMessages(400, "DELETE FROM message WHERE _id BETWEEN 100 AND 300");
  EXPECT_GT(SqliteMaker(source()).Number("PRAGMA freelist_count"), 1);
  const size_t standing = StandingIn(source(), 400).size();
  EXPECT_GT(standing, 300U);
  EXPECT_GE(Found(kAll).size() * 10, standing * 9);
  EXPECT_EQ(Found(kLive).size(), 199U);
}

TEST_F(DeletedScan, ValuesOfARecoveredRowAreWhole) {
  MakeMessageConfig(config());
  MakeMessages(9, "DELETE FROM message WHERE _id = 5");
  EXPECT_EQ(RunScan(kAll), 0);
  // The head of the cell is overwritten, so the row id is not known.
  EXPECT_EQ(ResultRows("SELECT * FROM message WHERE body = " + SqlText(MessageBody(5))),
            (TextRows{{"0", "+491511000005", MessageBody(5), "1600000000005"}}));
}

TEST_F(DeletedScan, TheMainFileIsLeftOutUnlessTheConfigurationWantsIt) {
  MakeMessageConfig(config(), {}, 2);
  MakeMessages(9, "DELETE FROM message WHERE _id = 5");
  EXPECT_EQ(RunScan(kAll), 1012);
  EXPECT_EQ(ResultRows("SELECT count(*) FROM message"), (TextRows{{"8"}}));
}

TEST_F(DeletedScan, ATableOfScanTypeOneTakesNoPart) {
  ConfigTable flags;
  flags.scan_type = 1;
  MakeMessageConfig(config(), flags);
  MakeMessages(9, "DELETE FROM message WHERE _id = 5");
  EXPECT_TRUE(Found(kDeleted).empty());
  EXPECT_EQ(Found(kAll).size(), 8U);
}

TEST_F(DeletedScan, TextsThatOverflowComeBack) {
  MakeMessageConfig(config());
  std::string text;
  for (int i = 0; text.size() < 20000; ++i) text += "part " + std::to_string(i) + "; ";
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 3);
    db.Run("INSERT INTO message VALUES(4,'+4915112345'," + SqlText(text) + ",1600000000004)");
    AddMessages(db, 5, 7);
    db.Run("CREATE TABLE later(a INTEGER)");  // a chain must not reach the last page of the file
  }
  const std::vector<std::string> all = MessageBodies(1, 3) + MessageBodies(5, 7) + Sorted({text});
  EXPECT_EQ(Found(kDeleted), all);
}

TEST_F(DeletedScan, EveryPageSizeIsCarved) {
  MakeMessageConfig(config());
  for (const char* size : {"512", "1024", "4096", "8192", "32768"}) {
    MakeMessages(200, "DELETE FROM message WHERE _id % 5 = 0",
                 "PRAGMA page_size=" + std::string(size));
    EXPECT_EQ(Found(kDeleted), StandingIn(source(), 200)) << size;
  }
}

TEST_F(DeletedScan, Utf16IsConverted) {
  MakeMessageConfig(config());
  MakeMessages(20, "DELETE FROM message WHERE _id % 2 = 0", "PRAGMA encoding='UTF-16le'");
  EXPECT_EQ(Found(kDeleted), MessageBodies(1, 20));
}

TEST_F(DeletedScan, BigEndianUtf16IsReadAsLittleEndian) {
  {
    ConfigMaker config_db(config());
    config_db.AddTable("t");
    config_db.AddFeature("t", {"n", 1, 0, 1000, 2000, "", "", -1});
    config_db.AddField("t", {"body", "TEXT", 2, 1, 0});
    config_db.ScanDatabase(1);
  }
  SqliteMaker(source()).Run(
      "PRAGMA encoding='UTF-16be'; CREATE TABLE t(n INTEGER, body TEXT);"
      "INSERT INTO t VALUES(1000, 'AB')");
  EXPECT_EQ(Found(kLive, "body", "t"), (std::vector<std::string>{"AB"}));
  EXPECT_EQ(Found(kDeleted, "body", "t"),
            (std::vector<std::string>{"\xE4\x84\x80\xE4\x88\x80"}));  // U+4100 U+4200
}

// The rows were written before a column was added, and deleted.
TEST_F(DeletedScan, RowsOfAnOlderLayoutNeedItsConfiguration) {
  const std::string new_body = "too long for the room of a deleted row " + std::string(200, '.');
  {
    SqliteMaker db(source());
    db.Run(MessageTable());
    AddMessages(db, 1, 9);
    db.Run("DELETE FROM message WHERE _id % 2 = 0; ALTER TABLE message ADD COLUMN seen INTEGER");
    db.Run("INSERT INTO message VALUES(10,'+4915112345'," + SqlText(new_body) +
           ",1600000000010,1)");
  }
  MakeMessageConfig(config());
  EXPECT_EQ(Found(kDeleted), (std::vector<std::string>{new_body}));
  SqliteMaker(config()).Run("INSERT INTO create_table_sql VALUES('android','sms',7,'message'," +
                            SqlText(MessageTable()) + ")");
  EXPECT_EQ(Found(kDeleted), MessageBodies(1, 9) + Sorted({new_body}));
  request_.system_version = 6;  // the layout is younger than the system
  EXPECT_EQ(Found(kDeleted), (std::vector<std::string>{new_body}));
  request_.system_version = 7;
  EXPECT_EQ(Found(kDeleted).size(), 10U);
}

// A table of 22 columns whose rows were written when it had 20.
std::string WideTable(int columns) {
  std::string sql = "CREATE TABLE wide(_id INTEGER PRIMARY KEY, body TEXT";
  for (int i = 2; i < columns; ++i) sql += ", c" + std::to_string(i) + " INTEGER";
  return sql + ")";
}

void MakeWideSource(const std::string& path) {
  SqliteMaker db(path);
  db.Run(WideTable(20));
  for (int id = 1; id <= 6; ++id) {
    std::string values = std::to_string(id) + "," + SqlText(MessageBody(id));
    for (int i = 2; i < 20; ++i) values += "," + std::to_string(1000 + i);
    db.Run("INSERT INTO wide VALUES(" + values + ")");
  }
  db.Run("ALTER TABLE wide ADD COLUMN c20 INTEGER; ALTER TABLE wide ADD COLUMN c21 INTEGER");
  db.Run("DELETE FROM wide WHERE _id % 2 = 0");
}

TEST_F(DeletedScan, WideRowsMayLackAsManyColumnsAsTheConfigurationAllows) {
  MakeWideSource(source());
  for (const auto& [flexible, found] : {std::pair{0, 0U}, {1, 6U}, {2, 6U}, {-1, 0U}}) {
    fs::remove(config());
    {
      ConfigMaker config_db(config());
      ConfigTable flags;
      flags.flexible_cnt = flexible;
      config_db.AddTable("wide", flags);
      config_db.AddFeature("wide", {"c19", 1, 0, 1000, 2000, "", "", -1});
      config_db.AddField("wide", {"body", "TEXT", 2, 1, 0});
      config_db.AddField("wide", {"c19", "INTEGER", 0, 0, 0});
      config_db.AddField("wide", {"c21", "INTEGER", 0, 0, 0});
      config_db.ScanDatabase(1);
    }
    EXPECT_EQ(Found(kDeleted, "body", "wide").size(), found) << flexible;
    if (found == 0) continue;
    EXPECT_EQ(ResultRows("SELECT DISTINCT c19, c21 FROM wide"), (TextRows{{"1019", "0"}}));
  }
}

// The wider configured layout swallows the live one, and with it the result columns.
TEST_F(DeletedScan, AWiderConfiguredLayoutOfTheSameColumnsLeavesNoResultTable) {
  MakeWideSource(source());
  {
    ConfigMaker config_db(config());
    ConfigTable flags;
    flags.flexible_cnt = 3;
    config_db.AddTable("wide", flags);
    config_db.AddLayout("wide", WideTable(24));
    config_db.AddField("wide", {"body", "TEXT", 2, 1, 0});
    config_db.ScanDatabase(1);
  }
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_TRUE(ResultRows("SELECT name FROM sqlite_master").empty());
}

TEST_F(DeletedScan, RowIdsAreGuessedFromTheirNeighbours) {
  for (const int guess : {1, 2}) {
    fs::remove(config());
    ConfigTable flags;
    flags.need_guess_row_id = guess;
    MakeMessageConfig(config(), flags);
    MakeMessages(40, "DELETE FROM message WHERE _id IN (7, 8, 20, 33)");
    EXPECT_EQ(RunScan(kDeleted), 0);
    const TextRows guessed = {{"7", MessageBody(7)},
                              {"8", MessageBody(8)},
                              {"20", MessageBody(20)},
                              {"33", MessageBody(33)}};
    const TextRows rows =
        ResultRows("SELECT _id, body FROM message WHERE body IN (" + SqlText(MessageBody(7)) + "," +
                   SqlText(MessageBody(8)) + "," + SqlText(MessageBody(20)) + "," +
                   SqlText(MessageBody(33)) + ") ORDER BY date");
    ASSERT_EQ(rows.size(), 4U);
    if (guess == 1) {
      EXPECT_EQ(rows, guessed);
    } else {
      for (const auto& row : rows) EXPECT_EQ(row[0], row[1] == MessageBody(8) ? row[0] : "0");
    }
    EXPECT_EQ(ResultRows("SELECT count(*) FROM message"), (TextRows{{"40"}}));
  }
}

TEST_F(DeletedScan, ASmallTableIsReadFromItsOwnPagesWithoutTheRightMostOne) {
  ConfigTable flags;
  flags.is_small_table = 1;
  MakeMessageConfig(config(), flags);
  MakeMessages(120, "", "PRAGMA page_size=1024; PRAGMA user_version=1");
  const int64_t root =
      SqliteMaker(source()).Number("SELECT rootpage FROM sqlite_master WHERE name='message'");
  const std::string bytes = ReadBytes(source());
  const size_t page = static_cast<size_t>(root - 1) * 1024;
  ASSERT_EQ(bytes.at(page), 5);  // an interior page with leaves below
  const uint32_t cells = BigEndianAt(bytes, page + 3, 2);
  const uint32_t last_cell = BigEndianAt(bytes, page + 12 + 2 * (cells - 1), 2);
  const uint32_t last_key = BigEndianAt(bytes, page + last_cell + 4, 1);
  ASSERT_GT(last_key, 20U);
  ASSERT_LT(last_key, 120U);
  EXPECT_EQ(Found(kDeleted), MessageBodies(1, static_cast<int>(last_key)));
}

TEST_F(DeletedScan, ASmallTableOfOnePageLeavesOtherTablesAlone) {
  for (const int small : {0, 1}) {
    fs::remove(config());
    ConfigTable flags;
    flags.is_small_table = small;
    MakeMessageConfig(config(), flags);
    fs::remove(source());
    {
      SqliteMaker db(source());
      db.Run(MessageTable("other"));
      db.Run(MessageTable());
      AddMessages(db, 1, 10, "other");
      AddMessages(db, 11, 20);
      db.Run("DELETE FROM message WHERE _id = 15");
    }
    EXPECT_EQ(Found(kDeleted), MessageBodies(small == 1 ? 11 : 1, 20));
  }
}

TEST_F(DeletedScan, AFileOfOnePageHasNoTables) {
  MakeMessageConfig(config());
  SqliteMaker(source()).Run("PRAGMA user_version=1");
  ASSERT_EQ(fs::file_size(source()), 4096U);
  for (const int range : {kAll, kLive, kDeleted, kNothing}) {
    EXPECT_EQ(RunScan(range), 0);
    EXPECT_TRUE(ResultRows("SELECT name FROM sqlite_master").empty());
  }
}

// The header states such a page size as 1, and the walk takes that as it stands: a position is
// tested where a 0, 5 or 13 stands eight bytes before it.
TEST_F(DeletedScan, PagesOf65536BytesAreReadAsPagesOfOne) {
  {
    ConfigMaker config_db(config());
    config_db.AddTable("t");
    config_db.AddFeature("t", {"n", 1, 0, 100000, 200000, "", "", -1});
    config_db.AddField("t", {"n", "INTEGER", 0, 1, 0});
    config_db.ScanDatabase(1);
  }
  {
    SqliteMaker db(source());
    db.Run("PRAGMA page_size=65536; CREATE TABLE t(_id INTEGER PRIMARY KEY, n INTEGER, b BLOB)");
    for (int i = 1; i <= 8; ++i) {
      db.Run("INSERT INTO t VALUES(" + std::to_string(i) + "," + std::to_string(100000 + i) +
             ",x'FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000')");
    }
    db.Run("DELETE FROM t WHERE _id = 4");
  }
  ASSERT_EQ(BigEndianAt(ReadBytes(source()), 16, 2), 1U);
  EXPECT_EQ(Found(kLive, "n", "t").size(), 7U);
  EXPECT_GE(Found(kAll, "n", "t").size(), 7U);
  EXPECT_GE(Found(kDeleted, "n", "t").size(), 6U);
}

TEST_F(DeletedScan, AFileCutByWholePagesHasNoTablesForSqlite) {
  MakeMessageConfig(config());
  MakeMessages(400, "");
  fs::resize_file(source(), 4096 * 3);
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_TRUE(ResultRows("SELECT name FROM sqlite_master").empty());
}

// The stated page count is not trusted by SQLite once the change counter differs from the one that
// the count was written with.
TEST_F(DeletedScan, RowsOfALastPartialPageAreNotSaved) {
  MakeMessageConfig(config());
  MakeMessages(400, "");
  std::string bytes = ReadBytes(source());
  const size_t pages = bytes.size() / 4096;
  ASSERT_GT(pages, 4U);
  bytes[95] = static_cast<char>(bytes[95] + 1);
  WriteBytes(source(), bytes);
  EXPECT_EQ(Found(kDeleted), MessageBodies(1, 400));
  WriteBytes(source(), bytes.substr(0, (pages - 2) * 4096));
  const std::vector<std::string> whole_pages = Found(kDeleted);
  EXPECT_GT(whole_pages.size(), 50U);
  EXPECT_LT(whole_pages.size(), 400U);
  WriteBytes(source(), bytes.substr(0, (pages - 2) * 4096 + 4000));
  EXPECT_EQ(Found(kDeleted), whole_pages);
}

}  // namespace
