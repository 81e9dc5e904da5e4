#include <gtest/gtest.h>

#include <filesystem>

#include "differential/both_scans.h"
#include "reference/plain_scan.h"
#include "support/scan_fixture.h"
#include "support/sqlite_maker.h"

namespace differential {
namespace {

// A source that SQLite made, and what the configuration says of its table "t".
struct LiveCase {
  std::string name;
  std::string sql;
  std::vector<ConfigField> fields;  // name, type, kind, is_unique, ...
  bool is_ordered = true;
  bool has_rows = true;
};

const std::vector<ConfigField> kKeyAndNote = {{"k", "INTEGER", 0, 1, 0}, {"note", "TEXT", 2, 0, 0}};

std::vector<ConfigField> WithKeyType(const std::string& type) {
  return {{"k", type, 0, 1, 0}, {"note", "TEXT", 2, 0, 0}};
}

std::string ManyRows(const std::string& key, const std::string& note) {
  return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 400) "
         "INSERT INTO t SELECT " +
         key + ", " + note + " FROM n;";
}

const LiveCase kCases[] = {
    {"rows of different keys", "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("i", "'note ' || i"),
     kKeyAndNote},
    {"rows that repeat a key",
     "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("i * i % 97", "'note ' || i"), kKeyAndNote},
    {"keys with NULL", "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("nullif(i % 9, 3)", "i"),
     kKeyAndNote},
    {"no key at all",
     "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("i % 5", "i"),
     {{"k", "INTEGER", 0, 0, 0}, {"note", "TEXT", 2, 0, 0}}},
    {"texts with zero bytes and blobs of no bytes",
     "CREATE TABLE t(k BLOB, note BLOB);" +
         ManyRows("i",
                  "CASE i % 4 WHEN 0 THEN 'a' || char(0) || 'b' WHEN 1 THEN x'' "
                  "WHEN 2 THEN x'00' ELSE 'plain' END"),
     kKeyAndNote},
    {"keys with zero bytes and of no bytes",
     "CREATE TABLE t(k BLOB, note BLOB);" +
         ManyRows("CASE i % 5 WHEN 0 THEN 'a' || char(0) || i WHEN 1 THEN x'' WHEN 2 THEN 'a' "
                  "WHEN 3 THEN '' ELSE char(0) END",
                  "i"),
     WithKeyType("TEXT")},
    {"numbers that become texts",
     "CREATE TABLE t(k BLOB, note BLOB);" +
         ManyRows("CASE i % 2 WHEN 0 THEN i / 4 ELSE '' || (i / 4) END", "i"),
     WithKeyType("TEXT")},
    {"texts that become numbers",
     "CREATE TABLE t(k BLOB, note BLOB);" +
         ManyRows("CASE WHEN i < 200 THEN i WHEN i % 2 THEN '' || (i / 2) ELSE i / 4 || '.0' END",
                  "i"),
     WithKeyType("INTEGER")},
    {"whole reals",
     "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("CASE i % 2 WHEN 0 THEN i / 4 ELSE "
                                                     "i / 4 + 0.0 END",
                                                     "i"),
     WithKeyType("")},
    {"integers beyond the reach of reals",
     "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("9007199254740992 + i / 3", "i"),
     WithKeyType("REAL")},
    {"reals of a date",
     "CREATE TABLE t(k REAL, note BLOB);" + ManyRows("5e8 + (i / 2) * 0.25", "i"),
     WithKeyType("TIMESTAMP")},
    {"a row id that is a column",
     "CREATE TABLE t(rowid BLOB, k BLOB, note BLOB);" + ManyRows("-i, i / 2", "i"), kKeyAndNote},
    {"no row ids, in order",
     "CREATE TABLE t(k BLOB PRIMARY KEY, note BLOB) WITHOUT ROWID;" + ManyRows("-i", "i"),
     kKeyAndNote},
    {"no row ids, in no order",
     "CREATE TABLE t(k BLOB PRIMARY KEY, note BLOB) WITHOUT ROWID;" + ManyRows("-i", "i"),
     kKeyAndNote, false},
    {"an index that holds all columns",
     "CREATE TABLE t(k BLOB, note BLOB, more BLOB); CREATE INDEX i ON t(note, k);" +
         ManyRows("i / 2, 1000 - i", "zeroblob(90)"),
     kKeyAndNote, false},
    {"an index that holds all columns, in order",
     "CREATE TABLE t(k BLOB, note BLOB, more BLOB); CREATE INDEX i ON t(note, k);" +
         ManyRows("i / 2, 1000 - i", "zeroblob(90)"),
     kKeyAndNote},
    {"a virtual table",
     "CREATE VIRTUAL TABLE t USING fts5(k, note);"
     "INSERT INTO t VALUES('1', 'a'), ('2', 'b'), ('1', 'c')",
     kKeyAndNote},
    {"columns that are reckoned",
     "CREATE TABLE t(a BLOB, b BLOB, k BLOB AS (a % 7), note TEXT AS ('n' || b) STORED);"
     "INSERT INTO t VALUES(1, 2), (8, 3), (4, x''), (5, NULL)",
     kKeyAndNote},
    {"names in other letters", "CREATE TABLE t(K BLOB, Note BLOB);" + ManyRows("i / 2", "i"),
     kKeyAndNote, true, false},
    {"a column that is missing", "CREATE TABLE t(k BLOB); INSERT INTO t VALUES(1), (2)",
     kKeyAndNote},
    {"texts in UTF-16",
     "PRAGMA encoding='UTF-16le'; CREATE TABLE t(k BLOB, note BLOB);" +
         ManyRows("i / 2", "'note ' || i"),
     kKeyAndNote},
    {"a result type with a constraint",
     "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("i", "i % 50"),
     {{"k", "INTEGER", 0, 1, 0}, {"note", "TEXT UNIQUE ON CONFLICT REPLACE", 2, 0, 0}}},
    {"a result type that is a constraint",
     "CREATE TABLE t(k BLOB, note BLOB);" + ManyRows("i % 60", "i % 50"),
     {{"k", "INTEGER", 0, 1, 0}, {"note", "UNIQUE", 2, 0, 0}}},
};

LiveCase ManyColumns() {
  LiveCase many{"more columns than a function takes", "CREATE TABLE t(c0 BLOB", {}};
  std::string values = "1";
  many.fields.push_back({"c0", "INTEGER", 0, 1, 0});
  for (int i = 1; i < 140; ++i) {
    many.sql += ",c" + std::to_string(i) + " BLOB";
    values += "," + std::to_string(i);
    many.fields.push_back({"c" + std::to_string(i), "INTEGER", 0, 0, 0});
  }
  many.sql += "); INSERT INTO t VALUES(" + values + "); INSERT INTO t SELECT * FROM t";
  return many;
}

class LiveRows : public testing::Test {
 protected:
  void Make(const LiveCase& live) {
    Application application;
    AppTable table;
    table.name = "t";
    table.fields = live.fields;
    table.flags.need_order_by_rowid = live.is_ordered ? 1 : 0;
    application.tables.push_back(table);
    scans_.Configure(application);
    scans_.SetSource({});
    SqliteMaker(scans_.context().source_db_path).Run(live.sql);
  }

  size_t ExpectSameRows(const std::string& name) {
    size_t rows = 0;
    for (const Range range : {Range::kLive, Range::kAll}) {
      const Outcome plain = scans_.RunPlain(range);
      for (const LateIndexLimits& limits : {IndexNeverLate(), IndexAlwaysLate(), IndexLate(0, 1),
                                            IndexLate(5, 50), IndexLate(50, 399)}) {
        ScanOptions options;
        options.late_index = limits;
        const Outcome library = scans_.RunWith(options, range);
        EXPECT_EQ(library.ending, plain.ending) << name;
        EXPECT_TRUE(SameLines(library.rows, plain.rows))
            << name << ", index late from " << limits.few_rows << " to " << limits.rows;
      }
      rows += plain.row_count;
    }
    return rows;
  }

  // The rows after a live scan into a result whose table compares keys without regard to case.
  template <typename ScanExist>
  TextRows RowsWithoutCase(ScanSqliteProbe& probe, const ScanExist& scan_exist) {
    std::filesystem::remove(scans_.context().dest_db_path);
    EXPECT_EQ(probe.Init(), kScanSucceeded);
    for (const char* sql : {"DROP TABLE t", "CREATE TABLE t(k TEXT COLLATE NOCASE, note TEXT)",
                            "CREATE UNIQUE INDEX t_unique_key_index ON t(k)"}) {
      probe.storager().Execute(sql);
    }
    scan_exist();
    SqliteMaker result(scans_.context().dest_db_path);
    EXPECT_EQ(result.Text("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(result.Number("SELECT count(*) FROM sqlite_master"), 2);
    return result.Rows("SELECT rowid, * FROM t");
  }

  BothScans scans_;
};

TEST_F(LiveRows, OfEveryKindOfTable) {
  for (const LiveCase& live : kCases) {
    Make(live);
    EXPECT_EQ(ExpectSameRows(live.name) > 0, live.has_rows) << live.name;
  }
  Make(ManyColumns());
  EXPECT_GT(ExpectSameRows("many columns"), 1U);
}

// The keys seem to differ, and the index cannot be made behind the rows: they are all copied again.
TEST_F(LiveRows, OfATableWhoseIndexFindsMoreKeysEqual) {
  const std::string key = "CASE i % 2 WHEN 0 THEN 'key ' ELSE 'KEY ' END || (i / 2)";
  // The second one's rows are sorted, and read by names.
  for (const std::string& sql :
       {"CREATE TABLE t(k TEXT, note TEXT);" + ManyRows(key, "'note ' || i"),
        "CREATE TABLE t(rowid BLOB, k TEXT, note TEXT);" +
            ManyRows("-i, " + key, "'note ' || i")}) {
    Make({"", sql, WithKeyType("TEXT")});
    PlainScan plain(scans_.context());
    const TextRows expected = RowsWithoutCase(plain.probe(), [&plain] { plain.ScanExist(); });
    EXPECT_EQ(expected.size(), 201U);
    for (const LateIndexLimits& limits :
         {IndexNeverLate(), IndexAlwaysLate(), IndexLate(0, 1), IndexLate(0, 150)}) {
      ScanSqliteProbe probe(scans_.context());
      const TextRows rows = RowsWithoutCase(probe, [&] {
        probe.late_index_limits() = limits;
        probe.ScanExist();
      });
      EXPECT_EQ(rows, expected) << limits.rows << sql;
    }
  }
}

// Pages in the middle of the table are damaged, one after the other.
TEST_F(LiveRows, OfADamagedTable) {
  Make({"",
        "PRAGMA page_size=512; CREATE TABLE t(k BLOB, note BLOB);" +
            ManyRows("i / 2", "'note ' || i"),
        kKeyAndNote});
  const std::string path = scans_.context().source_db_path;
  const std::string whole = ReadBytes(path);
  size_t rows = 0;
  for (size_t page = 1; page * 512 < whole.size(); page += 2) {
    std::string damaged = whole;
    for (size_t i = 0; i < 60; ++i) damaged[page * 512 + i] = static_cast<char>(i * 37 + page);
    WriteBytes(path, damaged);
    rows += ExpectSameRows("page " + std::to_string(page + 1));
  }
  EXPECT_GT(rows, 1000U);
}

}  // namespace
}  // namespace differential
