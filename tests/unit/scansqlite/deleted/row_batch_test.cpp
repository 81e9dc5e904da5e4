#include "scansqlite/deleted/row_batch.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "common/sqlitecommon/sqlite_connection.h"

namespace {

using Rows = std::vector<std::pair<int64_t, int64_t>>;

// Rows of a row id and a unique number.
class RowBatchTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(result_.Open(":memory:"), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(result_.handle(),
                           "CREATE TABLE t(id INTEGER, number INTEGER);"
                           "CREATE UNIQUE INDEX u ON t(number)",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    insert_.Prepare(result_.handle(), "insert into t(id,number) values(?,?)");
  }

  static TableFields Fields(bool id_is_unique, bool number_is_unique) {
    TableFields fields(2);
    fields[0] = {0, kFieldInteger, "id", "INTEGER"};
    fields[1] = {0, kFieldInteger, "number", "INTEGER"};
    fields[0].is_unique_field = id_is_unique ? 1 : 0;
    fields[1].is_unique_field = number_is_unique ? 1 : 0;
    return fields;
  }

  static void Commit(RowBatch& batch, int64_t number, const RowIdHint& hint) {
    batch.values().push_back(BoundValue::Integer(hint.row_id));
    batch.values().push_back(BoundValue::Integer(number));
    batch.Commit(hint);
  }

  // The page is complete, and there is no other.
  static void Save(RowBatch& batch) {
    batch.EndPage();
    batch.SavePages([] { return false; });
  }

  static bool IsKnown(RowBatch& batch, int64_t number) {
    batch.key_row()[1] = BoundValue::Integer(number);
    return batch.CanKnow() && batch.IsKnown();
  }

  Rows ResultRows() {
    Rows rows;
    SqliteStatement query;
    query.Prepare(result_.handle(), "select id, number from t order by rowid");
    while (query.Step() == SQLITE_ROW)
      rows.emplace_back(query.ColumnInt64(0), query.ColumnInt64(1));
    return rows;
  }

  SqliteConnection result_;
  SqliteStatement insert_;
  SavedKeys keys_{1 << 20};
};

constexpr RowIdHint kUnknown{false, 0};

TEST_F(RowBatchTest, AKnownRowIsANeighbourAndNothingElse) {
  const TableFields fields = Fields(false, true);
  RowSink sink(fields, insert_, &keys_, 1);
  RowBatch batch(sink, "id", true);
  Commit(batch, 100, {true, 9});
  Save(batch);
  // The page holds 100 again, in front of two records without a head.
  EXPECT_FALSE(IsKnown(batch, 101));
  ASSERT_TRUE(IsKnown(batch, 100));
  batch.CommitKnown({true, 9});
  Commit(batch, 101, kUnknown);
  Commit(batch, 102, kUnknown);
  Save(batch);
  EXPECT_EQ(ResultRows(), (Rows{{9, 100}, {8, 101}, {7, 102}}));
}

TEST_F(RowBatchTest, AKnownRowWithoutAHeadCountsAsAPlace) {
  const TableFields fields = Fields(false, true);
  RowSink sink(fields, insert_, &keys_, 1);
  RowBatch batch(sink, "id", true);
  Commit(batch, 50, {true, 20});
  batch.CommitKnown(kUnknown);
  Commit(batch, 51, kUnknown);
  Save(batch);
  EXPECT_EQ(ResultRows(), (Rows{{20, 50}, {18, 51}}));
}

TEST_F(RowBatchTest, NothingIsKnownOfAPageThatWasDropped) {
  const TableFields fields = Fields(false, true);
  RowSink sink(fields, insert_, &keys_, 1);
  RowBatch batch(sink, "id", true);
  Commit(batch, 1, {true, 1});
  batch.Drop();
  EXPECT_FALSE(IsKnown(batch, 1));
  batch.CommitKnown({true, 1});
  Save(batch);
  EXPECT_TRUE(ResultRows().empty());
}

// The rows of a page are saved before the next one is asked for, with one statement for them all.
TEST_F(RowBatchTest, PagesAreAskedForOneAfterTheOther) {
  const TableFields fields = Fields(false, true);
  for (const bool has_feed : {false, true}) {
    sqlite3_exec(result_.handle(), "DELETE FROM t", nullptr, nullptr, nullptr);
    RowSink sink(fields, insert_, nullptr, 1);
    if (has_feed) sink.UseFeed(result_.handle(), "t");
    RowBatch batch(sink, "id", true);
    std::vector<size_t> saved_before;
    int page = 0;
    batch.SavePages([&] {
      saved_before.push_back(ResultRows().size());
      if (++page == 5) return false;
      if (page == 2) return true;  // a page without rows
      Commit(batch, 10 * page, {true, 20 * page});
      Commit(batch, 10 * page + 1, kUnknown);
      if (page == 3) {
        batch.Drop();  // cut by the end of the source
      } else {
        batch.EndPage();
      }
      return true;
    });
    EXPECT_EQ(ResultRows(), (Rows{{20, 10}, {19, 11}, {80, 40}, {79, 41}})) << has_feed;
    EXPECT_EQ(saved_before, (std::vector<size_t>{0, 2, 2, 2, 4})) << has_feed;
  }
}

TEST_F(RowBatchTest, WhatAPageThrowsComesOutBehindTheRowsBeforeIt) {
  const TableFields fields = Fields(false, true);
  for (const bool has_feed : {false, true}) {
    sqlite3_exec(result_.handle(), "DELETE FROM t", nullptr, nullptr, nullptr);
    RowSink sink(fields, insert_, nullptr, 1);
    if (has_feed) sink.UseFeed(result_.handle(), "t");
    RowBatch batch(sink, "", false);
    bool is_first = true;
    const auto save = [&] {
      batch.SavePages([&] {
        Commit(batch, is_first ? 1 : 2, {true, 1});
        if (!std::exchange(is_first, false)) throw std::range_error("bad conversion");
        batch.EndPage();
        return true;
      });
    };
    EXPECT_THROW(save(), std::range_error) << has_feed;
    EXPECT_EQ(ResultRows(), (Rows{{1, 1}})) << has_feed;
    // The connection and the sink go on.
    batch.Drop();
    Commit(batch, 3, {true, 3});
    Save(batch);
    EXPECT_EQ(ResultRows(), (Rows{{1, 1}, {3, 3}})) << has_feed;
  }
}

// A guessed row id changes a key that it is a part of.
TEST_F(RowBatchTest, KeysThatHoldARowIdAreNotLookedUpEarly) {
  const TableFields with_id = Fields(true, true);
  const TableFields without_key = Fields(false, false);
  const TableFields plain = Fields(false, true);
  RowSink sink_with_id(with_id, insert_, &keys_, 1);
  RowSink sink_without_key(without_key, insert_, &keys_, 1);
  RowSink sink_without_set(plain, insert_, nullptr, 1);
  EXPECT_FALSE(RowBatch(sink_with_id, "id", true).CanKnow());
  EXPECT_TRUE(RowBatch(sink_with_id, "", true).CanKnow());
  EXPECT_FALSE(RowBatch(sink_without_key, "id", true).CanKnow());
  EXPECT_FALSE(RowBatch(sink_without_set, "id", true).CanKnow());
}

}  // namespace
