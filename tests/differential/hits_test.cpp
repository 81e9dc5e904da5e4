#include <gtest/gtest.h>

#include <set>

#include "differential/both_scans.h"
#include "reference/plain_scan.h"
#include "support/sqlite_maker.h"

namespace differential {
namespace {

using plain_walk::Hit;

// Rows that tell where they come from: nothing keeps duplicates out, and the row id is that of the
// hit.
Application Telling(Dice& dice, size_t tables) {
  Application application;
  for (size_t i = 0; i < tables; ++i) {
    AppTable table = MessagesTable("t" + std::to_string(i), 18 + dice.Below(6));
    if (dice.Chance(50)) table.features.pop_back();
    for (ConfigField& field : table.fields) field.is_unique = 0;
    application.tables.push_back(table);
  }
  return application;
}

// The row ids of a result table, in the order in which the rows were saved.
std::vector<int64_t> SavedRowIds(const std::string& path, const std::string& table) {
  SqliteMaker db(path);
  std::vector<int64_t> row_ids;
  for (const auto& row : db.Rows("SELECT _id FROM " + table + " ORDER BY rowid")) {
    row_ids.push_back(std::stoll(row.at(0)));
  }
  return row_ids;
}

// Each hit of the plain walk, table by table, layout by layout and in rising order, is one row.
TEST(Hits, AreTheRowsOfTheLibraryInTheirOrder) {
  BothScans scans;
  size_t hits_seen = 0;
  std::set<size_t> layouts;
  for (uint64_t seed = 1; seed <= SeedsOf(8); ++seed) {
    Dice dice(7000 + seed);
    const Application application = Telling(dice, 2);
    scans.Configure(application);
    SourceShape shape;
    shape.with_log = seed % 2 == 0;
    Source source = MakeSource(dice, application, shape);
    // Only whole pages save rows; a hit in a piece of one would be none.
    AppendRandomPages(dice, source, 4);
    PlantRecords(dice, application, source.db, 40, 2 * PageSizeOf(source.db));
    scans.SetSource(source);
    std::vector<Hit> hits;
    {
      PlainScan plain(scans.context());
      ASSERT_EQ(plain.Init(), kScanSucceeded);
      hits = plain.LogHits();
      const std::vector<Hit> of_file = plain.MainFileHits();
      hits.insert(hits.end(), of_file.begin(), of_file.end());
    }
    const Outcome library = scans.RunLibrary(Range::kDeleted);
    EXPECT_EQ(library.row_count, hits.size()) << "seed " << seed;
    for (const AppTable& table : application.tables) {
      std::vector<int64_t> row_ids;
      for (const Hit& hit : hits) {
        if (hit.table != table.name) continue;
        row_ids.push_back(hit.hint.has_row_id ? hit.hint.row_id : 0);
        layouts.insert(hit.layout);
      }
      EXPECT_EQ(SavedRowIds(scans.context().dest_db_path, table.name), row_ids) << "seed " << seed;
    }
    hits_seen += hits.size();
  }
  EXPECT_GT(hits_seen, 500U);
  EXPECT_GT(layouts.size(), 1U);
}

// The reader of CREATE texts takes what a comment says for columns, here one that SQLite knows as
// another name of the first column. Values go by names then, and that name gets none.
TEST(LiveCopy, AColumnThatSqliteCallsByAnotherName) {
  BothScans scans;
  Dice dice(5);
  Application application{{MessagesTable()}, 1, {}};
  AppTable& table = application.tables[0];
  table.columns[1].type = "INTEGER /* , oid INTEGER */";
  table.older.clear();
  table.fields = {
      {"_id", "INTEGER", 0, 0, 1}, {"oid", "INTEGER", 0, 0, 0}, {"body", "TEXT", 2, 0, 0}};
  scans.Configure(application);
  scans.SetSource(MakeSource(dice, application, {}));
  scans.ExpectEqual(Range::kLive, "oid");
  scans.ExpectEqual(Range::kAll, "oid");
  EXPECT_GT(scans.rows_seen(), 50U);
  scans.RunLibrary(Range::kLive);
  SqliteMaker result(scans.context().dest_db_path);
  EXPECT_EQ(result.Number("SELECT count(*) FROM sms WHERE oid NOT NULL"), 0);
  EXPECT_GT(result.Number("SELECT count(*) FROM sms WHERE _id > 5 AND body NOT NULL"), 5);
}

}  // namespace
}  // namespace differential
