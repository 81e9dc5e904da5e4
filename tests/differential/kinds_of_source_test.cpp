#include <gtest/gtest.h>

#include "differential/both_scans.h"
#include "support/scan_fixture.h"

namespace differential {
namespace {

std::string Case(const std::string& what, uint64_t number) {
  return what + " " + std::to_string(number);
}

// A wide table: 24 columns now, 21 and 15 before, of which the first differs by few columns.
AppTable WideTable(const std::string& name, int flexible_cnt) {
  AppTable table = MessagesTable(name, 24);
  table.older.clear();
  for (const size_t older : {size_t{15}, size_t{21}}) {
    table.older.emplace_back(table.columns.begin(),
                             table.columns.begin() + static_cast<std::ptrdiff_t>(older));
  }
  table.flags.flexible_cnt = flexible_cnt;
  return table;
}

// Nothing that refuses NULL, and a text first.
AppTable LooseTable(const std::string& name) {
  AppTable table;
  table.name = name;
  table.columns = {{"title", "TEXT", Kind::kText}, {"amount", "REAL", Kind::kReal},
                   {"data", "BLOB", Kind::kBlob},  {"open", "BOOL", Kind::kFlag},
                   {"note", "TEXT", Kind::kDirty}, {"any", "VARCHAR", Kind::kAny}};
  table.older = {{table.columns.begin(), table.columns.begin() + 4}};
  table.fields = {{"title", "TEXT", 2, 0, 0}, {"amount", "REAL", 1, 0, 0},
                  {"data", "BLOB", 3, 0, 0},  {"open", "INTEGER", 0, 0, 0},
                  {"note", "TEXT", 2, 0, 0},  {"any", "", 2, 0, 0}};
  return table;
}

void ScanPlanted(BothScans& scans, const Application& application, Dice& dice,
                 const SourceShape& shape, const std::string& name) {
  Source source = MakeSource(dice, application, shape);
  AppendRandomPages(dice, source, 6);
  PlantRecords(dice, application, source.db, 30, 2 * PageSizeOf(source.db));
  if (shape.with_log) PlantRecords(dice, application, source.log, 10, 32);
  scans.SetSource(source);
  scans.ExpectEqual(Range::kAll, name);
  scans.ExpectEqual(Range::kDeleted, name);
}

TEST(KindsOfSource, FlexibleWideTables) {
  for (const int flexible : {0, 3, 4, 35, -2}) {
    BothScans scans;
    const Application application{{WideTable("wide", flexible)}, 1, {}};
    scans.Configure(application);
    Dice dice(static_cast<uint64_t>(flexible + 10));
    ScanPlanted(scans, application, dice, {},
                Case("flexible_cnt", static_cast<uint64_t>(flexible)));
    EXPECT_GT(scans.rows_seen(), 20U);
  }
}

TEST(KindsOfSource, ThirtyFiveColumns) {
  BothScans scans;
  const Application application{{MessagesTable("sms", 35)}, 1, {}};
  scans.Configure(application);
  Dice dice(35);
  ScanPlanted(scans, application, dice, {}, "35 columns");
  EXPECT_GT(scans.rows_seen(), 20U);
}

TEST(KindsOfSource, RunsOfZerosInLooseTables) {
  BothScans scans;
  for (uint64_t seed = 1; seed <= 6; ++seed) {
    Dice dice(seed);
    Application application{{LooseTable("loose")}, 1, {}};
    if (seed % 2 == 0) application.tables[0].flags.need_guess_row_id = 1;
    for (ConfigField& field : application.tables[0].fields) field.is_unique = seed > 3 ? 1 : 0;
    scans.Configure(application);
    SourceShape shape;
    shape.with_log = seed == 5;
    shape.page_size = seed == 6 ? 4096 : 512;
    ScanPlanted(scans, application, dice, shape, Case("loose", seed));
  }
  EXPECT_GT(scans.rows_seen(), 1000U);
}

TEST(KindsOfSource, Utf16) {
  BothScans scans;
  size_t thrown = 0;
  for (uint64_t seed = 1; seed <= SeedsOf(16); ++seed) {
    Dice dice(1000 + seed);
    Application application{{seed % 3 == 0 ? LooseTable("loose") : MessagesTable()}, 1, {}};
    if (seed % 3 == 1) application = RandomApplication(dice, 2);
    scans.Configure(application);
    SourceShape shape;
    shape.encoding = dice.Pick({"UTF-16le", "UTF-16be"});
    shape.with_log = seed % 4 == 0;
    Source source = MakeSource(dice, application, shape);
    if (seed % 2 == 0) PlantRecords(dice, application, source.db, 4, 2 * PageSizeOf(source.db));
    scans.SetSource(source);
    scans.ExpectEqual(Range::kDeleted, Case("utf-16", seed));
    thrown += scans.RunPlain(Range::kDeleted).ending.find("range_error") != std::string::npos;
  }
  EXPECT_GT(thrown, 0U);
  EXPECT_GT(scans.rows_seen(), 50U);
}

TEST(KindsOfSource, ReservedBytes) {
  BothScans scans;
  const Application application{{MessagesTable(), LooseTable("loose")}, 1, {}};
  scans.Configure(application);
  for (const int reserved : {1, 16, 32, 200, 255}) {
    Dice dice(static_cast<uint64_t>(reserved));
    SourceShape shape;
    shape.reserved = reserved;
    ScanPlanted(scans, application, dice, shape, Case("reserved", static_cast<uint64_t>(reserved)));
  }
  // A header that says otherwise than the pages, down to pages without room.
  for (const char reserved : {'\x08', '\x80', '\xFF'}) {
    Dice dice(7);
    SourceShape shape;
    shape.page_size = 512;
    Source source = MakeSource(dice, application, shape);
    source.db[20] = reserved;
    scans.SetSource(source);
    scans.ExpectEqual(Range::kAll, Case("patched", static_cast<uint8_t>(reserved)));
  }
  EXPECT_GT(scans.rows_seen(), 500U);
}

TEST(KindsOfSource, PageSizesThatSqliteNeverWrites) {
  BothScans scans;
  const Application application{{MessagesTable(), LooseTable("loose")}, 1, {}};
  scans.Configure(application);
  Dice dice(11);
  SourceShape shape;
  shape.page_size = 512;
  shape.rows = 10;
  shape.older_rows = 4;
  shape.with_log = true;
  const Source source = MakeSource(dice, application, shape);
  for (const uint64_t stated :
       {0, 1, 2, 3, 7, 8, 9, 100, 255, 500, 511, 513, 600, 1000, 4097, 40000}) {
    Source changed = source;
    PlantRecords(dice, application, changed.db, 20, 1024);
    PutBigEndian(changed.db, 16, stated, 2);
    scans.SetSource(changed);
    scans.ExpectEqual(Range::kDeleted, Case("stated page size", stated));
  }
  EXPECT_GT(scans.rows_seen(), 100U);
}

TEST(KindsOfSource, SmallTables) {
  BothScans scans;
  for (uint64_t seed = 1; seed <= SeedsOf(8); ++seed) {
    Dice dice(2000 + seed);
    Application application{{MessagesTable(), MessagesTable("other"), LooseTable("loose")}, 1, {}};
    for (AppTable& table : application.tables) {
      table.flags.is_small_table = dice.Chance(70) ? 1 : 0;
      table.flags.need_guess_row_id = dice.Chance(50) ? 1 : 0;
    }
    scans.Configure(application);
    SourceShape shape;
    shape.page_size = dice.Pick({512, 1024});
    shape.rows = 60;
    Source source = MakeSource(dice, application, shape);
    // Child numbers out of range, and trees that list their own ancestors.
    for (size_t page = 1; page * static_cast<size_t>(shape.page_size) < source.db.size(); ++page) {
      const size_t at = page * static_cast<size_t>(shape.page_size);
      if (source.db[at] != '\x05' || seed % 4 == 0) continue;
      const size_t cell = BigEndianAt(source.db, at + 12, 2);
      if (cell + 4 > static_cast<size_t>(shape.page_size)) continue;
      PutBigEndian(source.db, at + cell, dice.Pick<uint64_t>({0, 1, page + 1, 9999, 0xFFFFFFFF, 3}),
                   4);
    }
    scans.SetSource(source);
    scans.ExpectEqual(dice.Pick({Range::kAll, Range::kDeleted}), Case("small", seed));
  }
  EXPECT_GT(scans.rows_seen(), 1000U);
}

TEST(KindsOfSource, OverflowChains) {
  BothScans scans;
  AppTable table = MessagesTable();
  table.columns[11].kind = Kind::kLong;
  const Application application{{table, LooseTable("loose")}, 1, {}};
  scans.Configure(application);
  size_t thrown = 0;
  for (uint64_t seed = 1; seed <= SeedsOf(24); ++seed) {
    Dice dice(3000 + seed);
    SourceShape shape;
    shape.page_size = dice.Pick({512, 1024});
    shape.with_log = seed % 3 == 0;
    Source source = MakeSource(dice, application, shape);
    PlantRecords(dice, application, source.db, 40, 2 * PageSizeOf(source.db));
    Damage(dice, source.db, seed % 4 * 30, 2 * PageSizeOf(source.db));
    const size_t page_size = PageSizeOf(source.db);
    if (seed % 2 == 0) {
      // A page count whose product with the page size wraps to the size of the file.
      const uint64_t pages = source.db.size() / page_size + (uint64_t{1} << 32) / page_size;
      PutBigEndian(source.db, 28, pages, 4);
      PutBigEndian(source.db, 92, 0, 4);  // so that SQLite counts the pages itself
    }
    if (shape.with_log && seed % 2 == 1) {
      // Chains go on in the log only where the last three bytes of salt-1 are 0.
      for (size_t at = 32; at + 24 < source.log.size(); at += page_size + 24) {
        PutBigEndian(source.log, at + 9, 0, 3);
      }
    }
    scans.SetSource(source);
    scans.ExpectEqual(Range::kDeleted, Case("overflow", seed));
    thrown += scans.RunPlain(Range::kDeleted).ending.find("out_of_range") != std::string::npos;
  }
  EXPECT_GT(thrown, 0U);
  EXPECT_GT(scans.rows_seen(), 500U);
}

// A header that states more pages than there are lets a chain leave the file, and that shows even
// where the limits of another column refuse the record.
TEST(KindsOfSource, ChainsOfRefusedRecordsThatLeaveTheFile) {
  BothScans scans;
  const Application application{{MessagesTable()}, 1, {}};
  scans.Configure(application);
  Application refused = application;
  AppTable& table = refused.tables[0];
  table.older.clear();
  table.columns[4].kind = Kind::kSmall;  // no date
  table.columns[11].kind = Kind::kLong;
  size_t thrown = 0;
  for (uint64_t seed = 1; seed <= SeedsOf(12); ++seed) {
    Dice dice(5000 + seed);
    SourceShape shape;
    shape.page_size = 512;
    shape.rows = 20;
    Source source = MakeSource(dice, application, shape);
    PlantRecords(dice, refused, source.db, 40, 1024);
    const uint64_t pages = source.db.size() / 512 + (uint64_t{1} << 32) / 512;
    PutBigEndian(source.db, 28, pages, 4);
    PutBigEndian(source.db, 92, 0, 4);  // so that SQLite counts the pages itself
    scans.SetSource(source);
    scans.ExpectEqual(Range::kDeleted, Case("refused", seed));
    thrown += scans.RunPlain(Range::kDeleted).ending.find("out_of_range") != std::string::npos;
  }
  EXPECT_GT(thrown, 0U);
}

TEST(KindsOfSource, KeptOutBytesOfTheLog) {
  BothScans scans;
  Application application{{MessagesTable(), LooseTable("loose")}, 1, {}};
  application.owner.data = "wechat";
  scans.Configure(application);
  Dice dice(12);
  SourceShape shape;
  shape.with_log = true;
  ScanPlanted(scans, application, dice, shape, "kept out bytes");
  EXPECT_GT(scans.rows_seen(), 100U);
}

TEST(KindsOfSource, ManyTablesAtOnce) {
  BothScans scans;
  for (const size_t tables : {size_t{12}, size_t{20}}) {
    Dice dice(tables);
    Application application;
    for (size_t i = 0; i < tables; ++i) {
      const std::string name = "t" + std::to_string(i);
      AppTable table = i % 3 == 0   ? MessagesTable(name, 18 + i)
                       : i % 9 == 1 ? LooseTable(name)
                                    : MessagesTable(name, 19 + i);
      table.flags.need_guess_row_id = i % 2 == 0 ? 1 : 0;
      table.flags.is_small_table = i % 5 == 4 ? 1 : 0;
      application.tables.push_back(table);
    }
    scans.Configure(application);
    SourceShape shape;
    shape.rows = 6;
    shape.older_rows = 2;
    shape.with_log = true;
    ScanPlanted(scans, application, dice, shape, Case("tables", tables));
  }
  EXPECT_GT(scans.rows_seen(), 1000U);
}

// More layouts and sets than one sweep has room for.
TEST(KindsOfSource, MoreThanSixtyFourLayouts) {
  BothScans scans;
  Dice dice(77);
  Application application;
  for (size_t i = 0; i < 90; ++i) {
    AppTable table = LooseTable("t" + std::to_string(i));
    table.older.clear();
    for (size_t extra = 0; extra < i % 7; ++extra) {
      table.columns.push_back({"x" + std::to_string(extra), "INTEGER", Kind::kInteger});
    }
    ConfigFeature title{"title", 1, 2, static_cast<int64_t>(i % 30), 40, "", "", -1};
    ConfigFeature amount{"amount", 0, 1, -100000, 100000, "", "", i % 2 == 0 ? 0 : -1};
    table.features = {title, amount};
    application.tables.push_back(table);
  }
  scans.Configure(application);
  SourceShape shape;
  shape.rows = 4;
  ScanPlanted(scans, application, dice, shape, "90 tables");
  EXPECT_GT(scans.rows_seen(), 1000U);
}

}  // namespace
}  // namespace differential
