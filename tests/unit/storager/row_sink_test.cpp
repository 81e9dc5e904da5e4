#include "storager/row_sink.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "reference/save_row.h"
#include "storager/column_lists.h"
#include "storager/storager.h"
#include "storager/unique_index.h"
#include "support/dice.h"
#include "support/temp_folder.h"

namespace {

// Rows of a list.
class ListedRows : public RowSource {
 public:
  ListedRows(const TableFields& fields, const std::vector<RowValue>& rows)
      : fields_(fields), rows_(rows) {}

  const BoundValue* Next() override {
    if (given_ == rows_.size()) return nullptr;
    values_.clear();
    BindRowValue(fields_, rows_[given_++], values_);
    return values_.data();
  }
  size_t given() const { return given_; }

 private:
  const TableFields& fields_;
  const std::vector<RowValue>& rows_;
  size_t given_ = 0;
  std::vector<BoundValue> values_;
};

// Two result databases of one table, one filled row by row and one through a sink.
class TwoResults {
 public:
  TwoResults(const TableFields& fields, size_t key_bytes)
      : fields_(fields),
        by_rows_(Storager::Create(folder_.File("rows.db"))),
        by_sink_(Storager::Create(folder_.File("sink.db"))),
        keys_(key_bytes) {
    NeedQueryTables tables;
    tables["t"] = fields_;
    for (Storager* storager : {by_rows_.get(), by_sink_.get()}) {
      storager->CreateResultTables(tables);
      storager->Execute("PRAGMA synchronous=OFF");
    }
    row_insert_.Prepare(by_rows_->handle(), MakeInsertSql("t", fields_));
    sink_insert_.Prepare(by_sink_->handle(), MakeInsertSql("t", fields_));
    SavedKeys* keys = UniqueIndex(by_sink_->handle(), "t").Exists() ? &keys_ : nullptr;
    sink_ = std::make_unique<RowSink>(fields_, sink_insert_, keys, 1);
  }

  // The rows of the sink go in with one statement.
  void UseFeed() { sink_->UseFeed(by_sink_->handle(), "t"); }

  void SaveMany(const std::vector<RowValue>& rows) {
    for (const RowValue& row : rows) SaveRow(fields_, row, row_insert_);
    ListedRows listed(fields_, rows);
    sink_->SaveAll(listed);
    EXPECT_EQ(listed.given(), rows.size());
  }

  void Save(const RowValue& row) {
    SaveRow(fields_, row, row_insert_);
    values_.clear();
    BindRowValue(fields_, row, values_);
    sink_->SaveRow(values_.data());
  }

  // The same for the first rows of the table, which go in without the index after a few.
  void SaveFirst(const std::vector<RowValue>& rows) {
    for (const RowValue& row : rows) SaveRow(fields_, row, row_insert_);
    ListedRows listed(fields_, rows);
    UniqueIndex index(by_sink_->handle(), "t");
    if (!sink_->SaveMany(listed, index, {10, SIZE_MAX, SIZE_MAX})) {
      by_sink_->Execute("ROLLBACK");
      by_sink_->Execute("BEGIN");
      ListedRows again(fields_, rows);
      sink_->SaveAll(again);
    }
    EXPECT_TRUE(index.Exists());
  }

  void Execute(const std::string& sql) {
    by_rows_->Execute(sql.c_str());
    by_sink_->Execute(sql.c_str());
  }

  // Every statement is interrupted from now on, or runs again.
  void Interrupt(bool interrupt) {
    int (*const handler)(void*) = [](void*) { return 1; };
    for (const Storager* storager : {by_rows_.get(), by_sink_.get()}) {
      sqlite3_progress_handler(storager->handle(), 1, interrupt ? handler : nullptr, nullptr);
    }
  }

  std::vector<std::string> SavedRows() const { return RowsOf(*by_rows_); }
  std::vector<std::string> SinkRows() const { return RowsOf(*by_sink_); }
  size_t keys() const { return keys_.size(); }

 private:
  std::vector<std::string> RowsOf(const Storager& storager) const {
    std::string sql = "SELECT rowid";
    for (const TableFieldInfo& field : fields_) {
      sql += " || '|' || quote(" + field.field_name + ") || typeof(" + field.field_name + ")";
    }
    SqliteStatement query;
    query.Prepare(storager.handle(), sql + " FROM t ORDER BY rowid");
    std::vector<std::string> rows;
    while (query.Step() == SQLITE_ROW) rows.push_back(query.ColumnText(0));
    return rows;
  }

  TempFolder folder_;
  TableFields fields_;
  std::unique_ptr<Storager> by_rows_;
  std::unique_ptr<Storager> by_sink_;
  SqliteStatement row_insert_;
  SqliteStatement sink_insert_;
  SavedKeys keys_;
  std::unique_ptr<RowSink> sink_;
  std::vector<BoundValue> values_;
};

TableFields RandomFields(Dice& dice) {
  TableFields fields;
  const int unique = dice.Pick({0, 30, 60, 100});
  const bool odd = dice.Chance(40);
  for (size_t i = 0; i < 1 + dice.Below(5); ++i) {
    TableFieldInfo field;
    field.field_name = "f" + std::to_string(i);
    field.is_unique_field = dice.Chance(unique) ? dice.Pick({1, 1, -1}) : 0;
    field.field_type_text = dice.Pick({"INTEGER", "TEXT", "REAL", "BLOB", "", "NUMERIC", "UNIQUE"});
    if (odd && dice.Chance(40)) {
      field.field_type_text =
          dice.Pick({"TEXT COLLATE NOCASE", "TEXT UNIQUE ON CONFLICT REPLACE", "TEXT NOT NULL",
                     "TEXT UNIQUE", "INTEGER NOT NULL ON CONFLICT REPLACE DEFAULT 3",
                     "INTEGER CHECK(1)", "VARCHAR(3)", "INTEGER PRIMARY KEY"});
    }
    fields.push_back(field);
  }
  return fields;
}

// Few different values, so that many rows meet the same key, and values that are the same in one
// affinity only.
RowValue RandomRow(Dice& dice, const TableFields& fields) {
  RowValue row;
  for (const TableFieldInfo& field : fields) {
    const std::string& name = field.field_name;
    switch (dice.Below(5)) {
      case 0:
        row.text_values[name] = dice.Pick<std::string>(
            {"", "1", "1.0", "a", "A", "abc", std::string(200, 'x'), std::string("a\0b", 3)});
        break;
      case 1:
        row.integer_values[name] =
            dice.Pick<int64_t>({0, 1, -1, 65, 300, INT64_MIN, INT64_MAX - 1000000});
        break;
      case 2:
        row.real_values[name] =
            dice.Pick<double>({0.0, -0.0, 1.0, 0.5, 1e300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), 9223372036854775808.0});
        break;
      case 3:
        row.blob_values[name] =
            dice.Pick<std::vector<uint8_t>>({{}, {0}, {'a'}, {'1'}, std::vector<uint8_t>(300, 7)});
        break;
      default:
        if (dice.Chance(30)) break;  // NULL
        row.integer_values[name] = 5;
        // The text goes first.
        if (dice.Chance(20)) row.text_values[name] = "5";
        break;
    }
  }
  return row;
}

TEST(RowSinkTest, RowsAreThoseOfSavingOneByOne) {
  size_t kept = 0;
  size_t refused = 0;
  size_t keyed = 0;
  for (uint64_t seed = 1; seed <= 120; ++seed) {
    Dice dice(seed);
    const TableFields fields = RandomFields(dice);
    TwoResults results(fields, dice.Chance(20) ? 100000 : size_t{1} << 22);
    const size_t rows = 150 + dice.Below(150);
    results.Execute("BEGIN");
    for (size_t i = 0; i < rows; ++i) results.Save(RandomRow(dice, fields));
    results.Execute("COMMIT");
    ASSERT_EQ(results.SinkRows(), results.SavedRows()) << "seed " << seed;
    kept += results.SavedRows().size();
    refused += rows - results.SavedRows().size();
    keyed += results.keys();
  }
  EXPECT_GT(kept, 5000U);
  EXPECT_GT(refused, 1000U);
  EXPECT_GT(keyed, 1000U);
}

TEST(RowSinkTest, ManyRowsAreThoseOfSavingOneByOne) {
  size_t kept = 0;
  for (uint64_t seed = 1; seed <= 120; ++seed) {
    Dice dice(1000 + seed);
    const TableFields fields = RandomFields(dice);
    TwoResults results(fields, dice.Chance(20) ? 100000 : size_t{1} << 22);
    results.UseFeed();
    results.Execute("BEGIN");
    for (size_t batch = 0; batch < 5; ++batch) {
      std::vector<RowValue> rows;
      while (rows.size() < dice.Below(90)) rows.push_back(RandomRow(dice, fields));
      results.SaveMany(rows);
    }
    results.Execute("COMMIT");
    ASSERT_EQ(results.SinkRows(), results.SavedRows()) << "seed " << seed;
    kept += results.SavedRows().size();
  }
  EXPECT_GT(kept, 3000U);
}

const TableFields kNumbers = {{1, 0, "n", "INTEGER"}, {0, 2, "body", "TEXT"}};

RowValue NumberRow(int64_t number, const std::string& body) {
  RowValue row;
  row.integer_values["n"] = number;
  row.text_values["body"] = body;
  return row;
}

// A constraint of the declared type puts rows out again, whose keys are free then.
TEST(RowSinkTest, ARowThatAnotherOneReplacedMayComeBack) {
  TwoResults results({{1, 0, "n", "INTEGER"}, {0, 2, "body", "TEXT UNIQUE ON CONFLICT REPLACE"}},
                     1 << 20);
  results.Save(NumberRow(1, "same"));
  results.Save(NumberRow(2, "same"));
  results.Save(NumberRow(1, "same"));
  EXPECT_EQ(results.SavedRows(), (std::vector<std::string>{"3|1integer|'same'text"}));
  EXPECT_EQ(results.SinkRows(), results.SavedRows());
}

TEST(RowSinkTest, ATransactionThatAnInterruptUndidIsForgotten) {
  TwoResults results(kNumbers, 1 << 20);
  results.Execute("BEGIN");
  for (int64_t n = 0; n < 100; ++n) results.Save(NumberRow(n, "b"));
  results.Interrupt(true);
  results.Save(NumberRow(1000, "b"));
  results.Interrupt(false);
  EXPECT_TRUE(results.SavedRows().empty());
  for (int64_t n = 50; n < 150; ++n) results.Save(NumberRow(n, "b"));
  for (int64_t n = 50; n < 150; ++n) results.Save(NumberRow(n, "b"));
  EXPECT_EQ(results.SavedRows().size(), 100U);
  EXPECT_EQ(results.SinkRows(), results.SavedRows());
}

// Every row is tried and refused, also where SQLite does not even ask for it.
TEST(RowSinkTest, AResultThatTakesNothingEndsTheSaving) {
  for (const bool is_interrupted : {false, true}) {
    TwoResults results(kNumbers, 1 << 20);
    results.UseFeed();
    std::vector<RowValue> rows;
    for (int64_t n = 0; n < 100; ++n) rows.push_back(NumberRow(n, "b"));
    if (is_interrupted) {
      results.Interrupt(true);
    } else {
      results.Execute("PRAGMA query_only=ON");
    }
    results.SaveMany(rows);
    results.Interrupt(false);
    results.Execute("PRAGMA query_only=OFF");
    EXPECT_TRUE(results.SinkRows().empty());
    results.SaveMany(rows);
    EXPECT_EQ(results.SinkRows().size(), 100U);
    EXPECT_EQ(results.SinkRows(), results.SavedRows());
  }
}

TEST(RowSinkTest, AFullDatabaseHoldsTheSameRows) {
  TwoResults results(kNumbers, 1 << 20);
  results.Execute("PRAGMA max_page_count=5");
  for (int round = 0; round < 3; ++round) {
    results.Execute("BEGIN");
    for (int64_t n = 0; n < 200; ++n)
      results.Save(NumberRow(n % 90, std::string(n % 7 == 0 ? 3000 : 100, 'b')));
    results.Execute("COMMIT");
    EXPECT_EQ(results.SinkRows(), results.SavedRows()) << round;
  }
  EXPECT_GT(results.SavedRows().size(), 3U);
  EXPECT_LT(results.SavedRows().size(), 90U);
}

// What does not fit undoes the transaction, and the rows behind it go in one by one.
TEST(RowSinkTest, AFullDatabaseHoldsTheSameOfManyRows) {
  for (const int pages : {4, 5, 7, 9}) {
    TwoResults results(kNumbers, 1 << 20);
    results.UseFeed();
    results.Execute(("PRAGMA max_page_count=" + std::to_string(pages)).c_str());
    for (int round = 0; round < 3; ++round) {
      std::vector<RowValue> rows;
      for (int64_t n = 0; n < 400; ++n) {
        rows.push_back(NumberRow(n % 300, std::string(n % 7 == 0 ? 3000 : 100, 'b')));
      }
      results.Execute("BEGIN");
      results.SaveMany(rows);
      results.Execute("COMMIT");
      EXPECT_EQ(results.SinkRows(), results.SavedRows()) << pages << ", " << round;
    }
    EXPECT_GT(results.SavedRows().size(), 3U);
    EXPECT_LT(results.SavedRows().size(), 300U);
  }
}

TEST(RowSinkTest, AFullDatabaseHoldsTheSameOfItsFirstRows) {
  for (const int pages : {4, 5, 7, 9}) {
    TwoResults results(kNumbers, 1 << 20);
    results.UseFeed();
    results.Execute(("PRAGMA max_page_count=" + std::to_string(pages)).c_str());
    std::vector<RowValue> rows;
    for (int64_t n = 0; n < 600; ++n) {
      rows.push_back(NumberRow(n % 500, std::string(n % 7 == 0 ? 3000 : 100, 'b')));
    }
    results.Execute("BEGIN");
    results.SaveFirst(rows);
    results.Execute("COMMIT");
    EXPECT_EQ(results.SinkRows(), results.SavedRows()) << pages;
    EXPECT_GT(results.SavedRows().size(), 3U);
    EXPECT_LT(results.SavedRows().size(), 500U);
  }
}

TEST(RowSinkTest, KeysOfOtherTablesAreOthers) {
  TempFolder folder;
  const auto storager = Storager::Create(folder.File("result.db"));
  NeedQueryTables tables;
  tables["one"] = kNumbers;
  tables["two"] = kNumbers;
  storager->CreateResultTables(tables);
  SavedKeys keys(1 << 20);
  for (uint32_t number = 1; number <= 2; ++number) {
    SqliteStatement insert;
    insert.Prepare(storager->handle(), MakeInsertSql(number == 1 ? "one" : "two", kNumbers));
    RowSink sink(kNumbers, insert, &keys, number);
    const RowValue row = NumberRow(7, "b");
    std::vector<BoundValue> values;
    BindRowValue(kNumbers, row, values);
    sink.SaveRow(values.data());
    sink.SaveRow(values.data());
  }
  EXPECT_EQ(keys.size(), 2U);
  SqliteStatement query;
  query.Prepare(storager->handle(), "SELECT (SELECT count(*) FROM one) * 10 + count(*) FROM two");
  query.Step();
  EXPECT_EQ(query.ColumnInt(0), 11);
}

TEST(RowSinkTest, WithoutATableNothingHappens) {
  TempFolder folder;
  const auto storager = Storager::Create(folder.File("result.db"));
  SqliteStatement insert;
  insert.Prepare(storager->handle(), MakeInsertSql("missing", kNumbers));
  SavedKeys keys(1 << 20);
  RowSink sink(kNumbers, insert, &keys, 1);
  const RowValue row = NumberRow(7, "b");
  std::vector<BoundValue> values;
  BindRowValue(kNumbers, row, values);
  sink.SaveRow(values.data());
  EXPECT_EQ(keys.size(), 0U);
}

}  // namespace
