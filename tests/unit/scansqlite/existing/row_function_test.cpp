#include "scansqlite/existing/row_function.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/sqlitecommon/sqlite_connection.h"
#include "common/sqlitecommon/sqlite_statement.h"

namespace {

class RowFunctionTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(source_.Open(":memory:"), SQLITE_OK); }

  void Run(const std::string& sql) {
    ASSERT_EQ(sqlite3_exec(source_.handle(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  }

  static TableFields Fields(size_t count) {
    TableFields fields;
    for (size_t i = 0; i < count; ++i) fields.push_back({0, 0, "c" + std::to_string(i), "TEXT"});
    return fields;
  }

  static std::string BytesOf(const BoundValue& value) {
    return {reinterpret_cast<const char*>(value.bytes), value.size};
  }

  SqliteConnection source_;
};

TEST_F(RowFunctionTest, EveryKindOfValueIsTaken) {
  Run("CREATE TABLE t(a, b, c, d, e, f, g);"
      "INSERT INTO t VALUES(-5, 2.5, 'text', x'0001', NULL, 'cut' || char(0) || 'off', x'')");
  TableFields fields = Fields(7);
  auto function = std::make_unique<RowFunction>(source_.handle(), fields);
  SqliteStatement query;
  query.Prepare(source_.handle(), "select " + RowFunction::Call("a,b,c,d,e,f,g") + " from t");
  ASSERT_EQ(query.Step(), SQLITE_ROW);
  EXPECT_EQ(function->TakeCalls(), 1U);
  const BoundValue* row = function->values();
  EXPECT_EQ(row[0].integer, -5);
  EXPECT_EQ(row[1].real, 2.5);
  EXPECT_EQ(BytesOf(row[2]), "text");
  EXPECT_EQ(BytesOf(row[3]), std::string("\0\1", 2));
  EXPECT_EQ(row[4].kind, kFieldNone);
  EXPECT_EQ(BytesOf(row[5]), "cut");
  EXPECT_EQ(row[6].kind, kFieldBlob);
  EXPECT_EQ(row[6].size, 0U);
  const int32_t kinds[] = {kFieldInteger, kFieldReal, kFieldText, kFieldBlob, 0,
                           kFieldText,    kFieldBlob};
  EXPECT_EQ(query.Step(), SQLITE_DONE);
  EXPECT_EQ(function->TakeCalls(), 0U);
  query.Finalize();
  function.reset();
  for (size_t i = 0; i < 7; ++i) EXPECT_EQ(fields[i].field_type, kinds[i]) << i;
}

TEST_F(RowFunctionTest, TheLastKindOfAColumnStays) {
  Run("CREATE TABLE t(a, b, c);"
      "INSERT INTO t VALUES('text', 1, NULL), (2, NULL, NULL), (NULL, 2.5, NULL)");
  TableFields fields = Fields(3);
  {
    const RowFunction function(source_.handle(), fields);
    SqliteStatement query;
    query.Prepare(source_.handle(), "select " + RowFunction::Call("a,b,c") + " from t");
    while (query.Step() == SQLITE_ROW) {
    }
  }
  EXPECT_EQ(fields[0].field_type, kFieldInteger);
  EXPECT_EQ(fields[1].field_type, kFieldReal);
  EXPECT_EQ(fields[2].field_type, Fields(3)[2].field_type);
}

// The values of a row replace those of the one before, however long they were.
TEST_F(RowFunctionTest, TheValuesAreThoseOfTheRow) {
  Run("CREATE TABLE t(a, b)");
  for (const int length : {3, 5000, 0, 70, 100000}) {
    Run("INSERT INTO t VALUES(substr(hex(zeroblob(50000)), 1, " + std::to_string(length) +
        ") , 'b" + std::to_string(length) + "')");
  }
  TableFields fields = Fields(2);
  RowFunction function(source_.handle(), fields);
  SqliteStatement query;
  query.Prepare(source_.handle(), "select " + RowFunction::Call("a,b") + " from t");
  for (const int length : {3, 5000, 0, 70, 100000}) {
    ASSERT_EQ(query.Step(), SQLITE_ROW);
    EXPECT_EQ(BytesOf(function.values()[0]), std::string(static_cast<size_t>(length), '0'));
    EXPECT_EQ(BytesOf(function.values()[1]), "b" + std::to_string(length));
  }
}

TEST_F(RowFunctionTest, SortedRowsShowByTheNumberOfCalls) {
  Run("CREATE TABLE t(a); INSERT INTO t VALUES(3), (1), (2)");
  TableFields fields = Fields(1);
  RowFunction function(source_.handle(), fields);
  SqliteStatement query;
  query.Prepare(source_.handle(), "select " + RowFunction::Call("a") + " from t order by a");
  ASSERT_EQ(query.Step(), SQLITE_ROW);
  EXPECT_EQ(function.TakeCalls(), 3U);
}

TEST_F(RowFunctionTest, SchemasCannotCallIt) {
  TableFields fields = Fields(1);
  RowFunction function(source_.handle(), fields);
  Run("CREATE TABLE t(a); CREATE VIEW v AS SELECT " + RowFunction::Call("a") + " FROM t");
  SqliteStatement query;
  EXPECT_NE(query.Prepare(source_.handle(), "select * from v"), SQLITE_OK);
}

TEST_F(RowFunctionTest, ItIsGoneWithTheObject) {
  TableFields fields = Fields(1);
  { const RowFunction function(source_.handle(), fields); }
  SqliteStatement query;
  EXPECT_NE(query.Prepare(source_.handle(), "select " + RowFunction::Call("1")), SQLITE_OK);
}

}  // namespace
