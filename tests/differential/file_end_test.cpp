#include <gtest/gtest.h>

#include "differential/both_scans.h"

namespace differential {
namespace {

// Two numbers, whatever they are: nearly every position is a record.
Application Numbers() {
  AppTable table;
  table.name = "numbers";
  table.columns = {{"a", "INTEGER", Kind::kSmall}, {"b", "INTEGER", Kind::kSmall}};
  table.fields = {{"a", "INTEGER", 0, 0, 0}, {"b", "INTEGER", 0, 0, 0}};
  table.features = {{"b", 1, 0, -100, 100, "", "", -1}};  // so that few bytes can be the second
  return {{table}, 1, {}};
}

Source SmallSource(uint64_t seed, const Application& application, bool with_log) {
  Dice dice(seed);
  SourceShape shape;
  shape.page_size = 512;
  shape.rows = 40;
  shape.with_log = with_log;
  return MakeSource(dice, application, shape);
}

// Serial types that the end of the source cuts: what is there of a varint counts.
const std::vector<std::string>& CutEnds() {
  static const std::vector<std::string> kEnds = {"\x01\x81",
                                                 "\x81\x01",
                                                 "\x01\x80",
                                                 "\x80\x80\x01",
                                                 "\x01\x80\x80",
                                                 "\x01\x80\x81",
                                                 "\x81\x81",
                                                 "\x01\xFF",
                                                 "\x01\x83",
                                                 "\x01\x01",
                                                 "\x08\x89",
                                                 "\x09\x80\x88",
                                                 "\x89\x01\x88",
                                                 "\x01",
                                                 "\x81",
                                                 "\x01\xFF\x81",
                                                 "\x80\x80\x80\x80\x81"};
  return kEnds;
}

TEST(FileEnd, SerialTypesCutByTheEndOfTheFile) {
  BothScans scans;
  scans.Configure(Numbers());
  const Source source = SmallSource(1, Numbers(), false);
  for (const std::string& end : CutEnds()) {
    Source cut = source;
    std::string page(512 - end.size(), '\x0A');
    page[0] = '\x0D';
    cut.db += page + end;
    scans.SetSource(cut);
    scans.ExpectEqual(Range::kDeleted, ToSql({12, end}));
  }
  EXPECT_GT(scans.rows_seen(), 100U);
}

TEST(FileEnd, SerialTypesCutByTheEndOfTheLog) {
  BothScans scans;
  scans.Configure(Numbers());
  const Source source = SmallSource(2, Numbers(), true);
  for (const std::string& end : CutEnds()) {
    Source cut = source;
    std::string frame(24 + 512 - end.size(), '\x0A');
    frame[24] = '\x0D';
    cut.log += frame + end;
    scans.SetSource(cut);
    scans.ExpectEqual(Range::kDeleted, ToSql({12, end}));
  }
  EXPECT_GT(scans.rows_seen(), 100U);
}

// Every length around the end of a page, and some in the middle of the last ones.
void CutEverywhere(BothScans& scans, const Source& source, std::string Source::*part,
                   size_t boundary) {
  for (int64_t by = -24; by <= 40; ++by) {
    Source cut = source;
    (cut.*part).resize(static_cast<size_t>(static_cast<int64_t>(boundary) + by));
    scans.SetSource(cut);
    scans.ExpectEqual(Range::kDeleted, "cut by " + std::to_string(by));
  }
}

// A page on which a record of two numbers stands nearly everywhere.
std::string PageOfNumbers() {
  std::string page(512, '\x01');
  page[0] = '\x0D';
  return page;
}

TEST(FileEnd, FilesOfEveryLengthAroundAPageEnd) {
  BothScans scans;
  const Application application{{MessagesTable()}, 1, {}};
  scans.Configure(application);
  Source source = SmallSource(3, application, false);
  Dice dice(3);
  AppendRandomPages(dice, source, 3);
  PlantRecords(dice, application, source.db, 40, 2 * PageSizeOf(source.db));
  // The page that is cut and the next one are swept.
  for (const size_t page : {3, 2}) source.db[source.db.size() - page * 512] = '\x0D';
  CutEverywhere(scans, source, &Source::db, source.db.size() - 1024);
  EXPECT_GT(scans.rows_seen(), 100U);
}

// The rows of a page that the end cuts are not saved, not even when the next table is carved.
TEST(FileEnd, RecordsOfACutPage) {
  BothScans scans;
  Application application = Numbers();
  application.tables.push_back(application.tables[0]);
  application.tables[1].name = "more_numbers";
  scans.Configure(application);
  Source source = SmallSource(5, application, false);
  source.db += PageOfNumbers() + PageOfNumbers() + PageOfNumbers();
  CutEverywhere(scans, source, &Source::db, source.db.size() - 1024);
  source = SmallSource(6, application, true);
  ASSERT_GT(source.log.size(), 32U + 4 * 536U);
  for (const size_t frame : {2, 3}) source.log.replace(56 + frame * 536, 512, PageOfNumbers());
  CutEverywhere(scans, source, &Source::log, 32 + 3 * 536);
  EXPECT_GT(scans.rows_seen(), 100000U);
}

TEST(FileEnd, LogsOfEveryLengthAroundAFrameEnd) {
  BothScans scans;
  const Application application{{MessagesTable()}, 1, {}};
  scans.Configure(application);
  Source source = SmallSource(4, application, true);
  ASSERT_GT(source.log.size(), 32U + 4 * 536U);
  CutEverywhere(scans, source, &Source::log, 32 + 3 * 536);
  for (size_t length = 0; length < 100; length += 3) {
    Source cut = source;
    cut.log.resize(length);
    scans.SetSource(cut);
    scans.ExpectEqual(Range::kDeleted, "a log of " + std::to_string(length));
  }
  EXPECT_GT(scans.rows_seen(), 100U);
}

}  // namespace
}  // namespace differential
