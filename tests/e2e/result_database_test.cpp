// The layout of the result database, and that equal scans give equal results.
#include <cxxabi.h>
#include <vexasqlitesdk.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "scansqlite/scan_sqlite.h"
#include "support/scan_fixture.h"

namespace fs = std::filesystem;

namespace {

class ResultDatabase : public ScanFixture {
 protected:
  static size_t OpenDescriptors() {
    const auto entries = fs::directory_iterator("/proc/self/fd");
    return static_cast<size_t>(std::distance(fs::begin(entries), fs::end(entries)));
  }

  void MakeSource() {
    SqliteMaker db(source());
    db.StartLog();
    db.Run(MessageTable());
    AddMessages(db, 1, 60);
    db.Run("PRAGMA wal_checkpoint(RESTART)");
    db.Run("DELETE FROM message WHERE _id % 3 = 0");
  }
};

TEST_F(ResultDatabase, TablesAndIndexesAreDeclaredAsConfigured) {
  {
    ConfigMaker config_db(config());
    config_db.AddTable("second");
    config_db.AddTable("first");
    config_db.AddField("first", {"c", "TEXT COLLATE NOCASE", 2, 2, 0});
    config_db.AddField("first", {"a", "INTEGER", 0, 0, 0});
    config_db.AddField("second", {"x", "", 2, 0, 0});
    config_db.AddField("first", {"b", "REAL", 1, -1, 0});
  }
  SqliteMaker(source()).Run(
      "CREATE TABLE first(a INTEGER, b REAL, c TEXT); CREATE TABLE second(x TEXT)");
  EXPECT_EQ(RunScan(kNothing), 0);
  EXPECT_EQ(ResultRows("SELECT type, name, tbl_name, sql FROM sqlite_master"),
            (TextRows{{"table", "first", "first",
                       "CREATE TABLE first(c TEXT COLLATE NOCASE,a INTEGER,b REAL)"},
                      {"index", "first_unique_key_index", "first",
                       "CREATE UNIQUE INDEX first_unique_key_index on first(c,b)"},
                      {"table", "second", "second", "CREATE TABLE second(x )"}}));
  EXPECT_EQ(ResultRows("PRAGMA encoding"), (TextRows{{"UTF-8"}}));
  EXPECT_EQ(ResultRows("PRAGMA journal_mode"), (TextRows{{"wal"}}));
  EXPECT_EQ(ResultRows("PRAGMA integrity_check"), (TextRows{{"ok"}}));
}

TEST_F(ResultDatabase, ATableWithoutAUniqueFieldTakesDuplicates) {
  {
    ConfigMaker config_db(config());
    config_db.AddTable("t");
    config_db.AddField("t", {"a", "TEXT", 2, 0, 0});
  }
  SqliteMaker(source()).Run("CREATE TABLE t(a); INSERT INTO t VALUES('x'),('x')");
  EXPECT_EQ(Found(kLive, "a", "t"), (std::vector<std::string>{"x", "x"}));
}

TEST_F(ResultDatabase, AFieldThatIsConfiguredTwiceGivesNoTable) {
  MakeMessageConfig(config());
  {
    SqliteMaker db(config());
    db.Run("INSERT INTO result_field_info SELECT * FROM result_field_info WHERE field_name='body'");
  }
  MakeSource();
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_TRUE(ResultRows("SELECT name FROM sqlite_master").empty());
}

TEST_F(ResultDatabase, AnOldResultIsRemovedFirst) {
  MakeMessageConfig(config());
  MakeSource();
  WriteBytes(result(), "no database at all");
  EXPECT_EQ(RunScan(kLive), 0);
  EXPECT_EQ(LogLines().at(1), "error Success");
  EXPECT_EQ(ResultRows("SELECT count(*) FROM message"), (TextRows{{"40"}}));
}

TEST_F(ResultDatabase, EqualScansGiveTheSameBytes) {
  ConfigTable flags;
  flags.need_guess_row_id = 1;
  MakeMessageConfig(config(), flags);
  MakeSource();
  const fs::path first = folder_.path() / "first.db";
  EXPECT_EQ(RunScan(kAll), 0);
  const TextRows rows = ResultRows("SELECT rowid, * FROM message");
  EXPECT_GE(rows.size(), 60U);
  // Read once more, since opening a result folds nothing in: it was closed by the scan.
  EXPECT_EQ(RunScan(kAll), 0);
  fs::copy_file(result(), first);
  fs::remove_all(temp());
  fs::create_directory(temp());
  EXPECT_EQ(RunScan(kAll), 0);
  EXPECT_EQ(ReadBytes(result()), ReadBytes(first.string()));
  EXPECT_EQ(ResultRows("SELECT rowid, * FROM message"), rows);
}

TEST_F(ResultDatabase, ManyScansKeepNoDescriptors) {
  MakeMessageConfig(config());
  MakeSource();
  EXPECT_EQ(RunScan(kAll), 0);
  const size_t before = OpenDescriptors();
  const std::string json = Json(kAll);
  for (int i = 0; i < 200; ++i) {
    ASSERT_EQ(Scan(json.data(), static_cast<int>(json.size()), this), 0);
  }
  EXPECT_EQ(OpenDescriptors(), before);
  fs::remove(source());
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(Scan(json.data(), static_cast<int>(json.size()), this), 1003);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

// The global names of a static library stand in its first member: their count, an offset each, and
// the names, each ended by a zero byte.
TEST(MangledName, TheNameInTheLogIsTheLinkersName) {
  const std::string name = ScanSqlite::kMangledGetWalFilePageMap;
  int status = -1;
  const std::unique_ptr<char, decltype(&std::free)> readable(
      abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), std::free);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(std::string(readable.get()).substr(0, 35), "ScanSqlite::GetWALFilePageMap(std::");
  const std::string archive = ReadBytes(VEXA_BUILD_DIR "/src/libvexasqlite_core.a");
  ASSERT_GT(archive.size(), 72U);
  ASSERT_EQ(archive.substr(0, 10), "!<arch>\n/ ");
  const size_t size = std::stoull(archive.substr(56, 10));
  const size_t names = 68 + 4 + 4 * size_t{BigEndianAt(archive, 68, 4)};
  const std::string list = archive.substr(names, 68 + size - names);
  EXPECT_NE(list.find('\0' + name + '\0'), std::string::npos);
}

}  // namespace
