#include "recovery/standing_search.h"

#include <gtest/gtest.h>

#include "recovery/database.h"
#include "recovery/layout_columns.h"
#include "recovery/used_cells.h"
#include "support/scan_fixture.h"
#include "support/temp_folder.h"

namespace recovery {
namespace {

class StandingSearchTest : public ::testing::Test {
 protected:
  StandingSearchTest() : db_(path_) {
    layout_.sql = "CREATE TABLE t(id INTEGER PRIMARY KEY, date INTEGER, text TEXT)";
    ReadColumns("t", layout_);
    db_.Run("PRAGMA page_size = 4096; PRAGMA secure_delete = off");
    db_.Run(layout_.sql);
  }

  void Insert(int id, const std::string& text) {
    db_.Run("INSERT INTO t VALUES(" + std::to_string(id) + ", " + std::to_string(1000000 + id) +
            ", " + SqlText(text) + ")");
  }

  RecordBytes Record(int id, const std::string& text) const {
    return EncodeRecord(layout_, {Value{}, int64_t{1000000 + id}, text}, TextEncoding::kUtf8);
  }

  Standing Find(int id, const std::string& text, bool also_in_use = false) const {
    const Evidence evidence(path_);
    return FindStanding(evidence, {{Record(id, text), also_in_use}}, UsedCells(evidence)).at(0);
  }

  // Changes bytes of the file behind SQLite's back.
  void Overwrite(const std::string& old_bytes, const std::string& new_bytes) const {
    std::string bytes = FileBytes(path_);
    const size_t at = bytes.find(old_bytes);
    ASSERT_NE(at, std::string::npos);
    WriteBytes(path_, bytes.replace(at, new_bytes.size(), new_bytes));
  }

  TempFolder folder_;
  std::string path_ = folder_.File("t.db");
  Database db_;
  Layout layout_;
};

TEST_F(StandingSearchTest, FindsDeletedRowsUntilTheyAreOverwritten) {
  for (int id = 1; id <= 20; ++id) Insert(id, "number " + std::to_string(id));
  db_.Run("DELETE FROM t WHERE id IN (5, 6, 12)");
  EXPECT_TRUE(Find(5, "number 5").found);
  EXPECT_TRUE(Find(12, "number 12").found);
  EXPECT_TRUE(Find(12, "number 12").in_main);
  EXPECT_FALSE(Find(12, "number 13").found);
  Overwrite("number 12", "NUMBER");
  EXPECT_FALSE(Find(12, "number 12").found);
  EXPECT_TRUE(Find(5, "number 5").found);
}

TEST_F(StandingSearchTest, RowsInUseCountOnlyWhenAskedFor) {
  for (int id = 1; id <= 300; ++id)
    Insert(id, "some text " + std::to_string(id));  // the first pages were split
  for (int id : {250, 275, 300}) {
    const std::string text = "some text " + std::to_string(id);
    EXPECT_FALSE(Find(id, text).found) << id;
    EXPECT_TRUE(Find(id, text, true).found) << id;
  }
}

TEST_F(StandingSearchTest, SecureDeleteLeavesNothing) {
  for (int id = 1; id <= 20; ++id) Insert(id, "number " + std::to_string(id));
  db_.Run("PRAGMA secure_delete = on");
  db_.Run("DELETE FROM t WHERE id = 12");
  EXPECT_FALSE(Find(12, "number 12").found);
}

TEST_F(StandingSearchTest, AnOverflowRowNeedsItsWholeChain) {
  std::string text;
  for (int i = 0; text.size() < 20000; ++i) text += "part " + std::to_string(i) + ' ';
  Insert(1, "first");
  Insert(2, text);
  Insert(3, "behind it");
  // The longer row's pages would become the list of free pages' first one otherwise.
  Insert(4, std::string(9000, 'x'));
  db_.Run("DELETE FROM t WHERE id = 4");
  db_.Run("DELETE FROM t WHERE id = 2");
  const Standing standing = Find(2, text);
  EXPECT_TRUE(standing.overflows);
  EXPECT_TRUE(standing.found);
  Overwrite(text.substr(12000, 50), "gone");
  EXPECT_FALSE(Find(2, text).found);
}

TEST_F(StandingSearchTest, FindsRowsThatOnlyTheLogHolds) {
  Insert(1, "in the database");
  db_.Run("PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0");
  Insert(2, "in the log");
  Insert(3, "also in the log");
  db_.Run("DELETE FROM t WHERE id = 2");
  const Standing standing = Find(2, "in the log");
  EXPECT_TRUE(standing.found);
  EXPECT_FALSE(standing.in_main);
  EXPECT_FALSE(Find(3, "also in the log", true).in_main);
}

TEST_F(StandingSearchTest, ShortRecordsAreFoundByAllTheirBytes) {
  Layout layout;
  layout.sql = "CREATE TABLE s(id INTEGER PRIMARY KEY, a INTEGER, b INTEGER)";
  ReadColumns("s", layout);
  db_.Run(layout.sql + "; INSERT INTO s VALUES(1, 77, 78), (2, 91, 92), (3, 93, 94)");
  db_.Run("DELETE FROM s WHERE id = 1");
  const Evidence evidence(path_);
  const auto wanted = [&](int64_t a, int64_t b) {
    return Wanted{EncodeRecord(layout, {Value{}, a, b}, TextEncoding::kUtf8)};
  };
  const auto standings =
      FindStanding(evidence, {wanted(77, 78), wanted(91, 92), wanted(77, 79)}, UsedCells(evidence));
  EXPECT_TRUE(standings[0].found);
  EXPECT_FALSE(standings[1].found);  // in use
  EXPECT_FALSE(standings[2].found);
}

}  // namespace
}  // namespace recovery
