#include "storager/row_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "common/sqlitecommon/sqlite_connection.h"
#include "common/sqlitecommon/sqlite_statement.h"
#include "support/dice.h"

namespace {

TableFields FieldOf(const std::string& type) { return {{1, 0, "k", type}}; }

BoundValue TextOf(const char* text) {
  return BoundValue::Text(reinterpret_cast<const uint8_t*>(text), std::string(text).size());
}

BoundValue BlobOf(const char* text) {
  return BoundValue::Blob(reinterpret_cast<const uint8_t*>(text), std::string(text).size());
}

const std::vector<BoundValue>& Values() {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  static const std::vector<BoundValue> values = {
      BoundValue::Null(),
      BoundValue::Integer(0),
      BoundValue::Integer(1),
      BoundValue::Integer(-1),
      BoundValue::Integer(64),
      BoundValue::Integer(int64_t{1} << 53),
      BoundValue::Integer((int64_t{1} << 53) + 1),
      BoundValue::Integer(std::numeric_limits<int64_t>::max()),
      BoundValue::Integer(std::numeric_limits<int64_t>::min()),
      BoundValue::Real(0.0),
      BoundValue::Real(-0.0),
      BoundValue::Real(1.0),
      BoundValue::Real(-1.0),
      BoundValue::Real(64.5),
      BoundValue::Real(9007199254740992.0),
      BoundValue::Real(9223372036854775808.0),
      BoundValue::Real(-9223372036854775808.0),
      BoundValue::Real(1e300),
      BoundValue::Real(kInfinity),
      BoundValue::Real(-kInfinity),
      BoundValue::Real(std::nan("")),
      TextOf(""),
      TextOf("0"),
      TextOf("1"),
      TextOf("1.0"),
      TextOf("-1"),
      TextOf("64.5"),
      TextOf("9007199254740993"),
      TextOf("a"),
      TextOf("A"),
      TextOf("a longer text that is more than a head of one byte says"),
      BlobOf(""),
      BlobOf("1"),
      BlobOf("a"),
  };
  return values;
}

// SQLite itself says whether two values are the same key to a column of the type.
class KeyColumn {
 public:
  explicit KeyColumn(const std::string& type) {
    connection_.Open(":memory:");
    const std::string sql = "CREATE TABLE t(k " + type + "); CREATE UNIQUE INDEX i ON t(k)";
    sqlite3_exec(connection_.handle(), sql.c_str(), nullptr, nullptr, nullptr);
    insert_.Prepare(connection_.handle(), "INSERT INTO t VALUES(?)");
  }

  bool AreSame(const BoundValue& a, const BoundValue& b) {
    sqlite3_exec(connection_.handle(), "DELETE FROM t", nullptr, nullptr, nullptr);
    EXPECT_EQ(Insert(a), SQLITE_DONE);
    return Insert(b) == SQLITE_CONSTRAINT;
  }

 private:
  int Insert(const BoundValue& value) {
    sqlite3_stmt* insert = insert_.handle();
    const auto size = static_cast<int>(value.size);
    switch (value.kind) {
      case kFieldInteger:
        sqlite3_bind_int64(insert, 1, value.integer);
        break;
      case kFieldReal:
        sqlite3_bind_double(insert, 1, value.real);
        break;
      case kFieldText:
        sqlite3_bind_text(insert, 1, reinterpret_cast<const char*>(value.bytes), size, nullptr);
        break;
      case kFieldBlob:
        sqlite3_bind_blob(insert, 1, size == 0 ? nullptr : value.bytes, size, nullptr);
        break;
      default:
        sqlite3_bind_null(insert, 1);
        break;
    }
    insert_.Step();
    return insert_.Reset() & 0xFF ? SQLITE_CONSTRAINT : SQLITE_DONE;
  }

  SqliteConnection connection_;
  SqliteStatement insert_;
};

struct Taken {
  bool has_key = false;
  bool is_exact = false;
  std::vector<uint8_t> bytes;
};

Taken Take(RowKey& key, const BoundValue& value) {
  if (!key.Make(&value)) return {};
  return {true, key.is_exact(), {key.bytes().begin(), key.bytes().end()}};
}

TEST(RowKeyTest, SaysWhatSqliteSays) {
  size_t same = 0;
  size_t told = 0;
  for (const char* type :
       {"INTEGER", "BIGINT", "TEXT", "VARCHAR", "CLOB", "BLOB", "", "REAL", "FLOAT", "DOUBLE",
        "NUMERIC", "TIMESTAMP", "LONG", "BOOL", "STRING", "CHARINT", "point", "text"}) {
    KeyColumn column(type);
    RowKey key(FieldOf(type), 1);
    for (const BoundValue& a : Values()) {
      const Taken first = Take(key, a);
      for (const BoundValue& b : Values()) {
        const Taken second = Take(key, b);
        const bool are_same = column.AreSame(a, b);
        if (!first.has_key || !second.has_key) {
          EXPECT_FALSE(are_same) << type;
        } else if (first.bytes == second.bytes) {
          EXPECT_TRUE(are_same) << type;
          ++same;
        } else if (first.is_exact && second.is_exact) {
          EXPECT_FALSE(are_same) << type << " " << a.kind << " " << b.kind;
          ++told;
        }
      }
    }
  }
  EXPECT_GT(same, 400U);
  EXPECT_GT(told, 6000U);
}

TEST(RowKeyTest, UsualKeysAreExact) {
  const struct {
    const char* type;
    BoundValue value;
    bool is_exact;
  } cases[] = {
      {"INTEGER", BoundValue::Integer(5), true},
      {"TEXT", TextOf("+49"), true},
      {"TIMESTAMP", BoundValue::Real(5.25), true},
      {"REAL", BoundValue::Real(5.25), true},
      {"", TextOf("a"), true},
      {"TEXT", BoundValue::Integer(5), false},
      {"INTEGER", TextOf("5"), false},
      {"REAL", BoundValue::Integer(5), false},
      {"TEXT", BoundValue::Real(5.0), false},
      {"INTEGER", BlobOf("5"), true},
  };
  for (const auto& [type, value, is_exact] : cases) {
    RowKey key(FieldOf(type), 1);
    ASSERT_TRUE(key.Make(&value));
    EXPECT_EQ(key.is_exact(), is_exact) << type << " " << value.kind;
  }
}

// Keys of several values differ if one value does, whatever their lengths.
TEST(RowKeyTest, ValuesDoNotRunIntoEachOther) {
  TableFields fields = FieldOf("TEXT");
  fields.push_back({0, 0, "other", "TEXT"});
  fields.push_back({1, 0, "l", "TEXT"});
  RowKey key(fields, 1);
  EXPECT_EQ(key.fields(), (std::vector<uint32_t>{0, 2}));
  const std::string long_text(5000, 'x');
  const std::vector<std::string> texts = {"", "a", "aa", "ab", long_text, long_text + "x"};
  std::vector<std::vector<uint8_t>> seen;
  for (const std::string& first : texts) {
    for (const std::string& second : texts) {
      const BoundValue row[] = {TextOf(first.c_str()), BoundValue::Null(), TextOf(second.c_str())};
      ASSERT_TRUE(key.Make(row));
      const std::vector<uint8_t> bytes(key.bytes().begin(), key.bytes().end());
      EXPECT_EQ(std::count(seen.begin(), seen.end(), bytes), 0);
      seen.push_back(bytes);
    }
  }
}

TEST(RowKeyTest, TablesHaveKeysOfTheirOwn) {
  const BoundValue value = BoundValue::Integer(5);
  std::vector<std::vector<uint8_t>> seen;
  for (const uint32_t table : {1U, 2U, 15U, 16U, 4000U}) {
    RowKey key(FieldOf("INTEGER"), table);
    seen.push_back(Take(key, value).bytes);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), seen.back()), 1);
  }
}

}  // namespace
