// CREATE texts turned into columns, with the limits of splitting on commas and spaces.
#include "common/sqlitecommon/create_sql_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "common/sqlitecommon/type_words.h"
#include "support/log_capture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Column {
  std::string name;
  int type_code;
  bool is_primary_key = false;
  bool operator==(const Column&) const = default;
};

void PrintTo(const Column& column, std::ostream* out) {
  *out << column.name << ":" << column.type_code << (column.is_primary_key ? " key" : "");
}

using Columns = std::vector<Column>;

Columns Parse(const std::string& sql) {
  Columns columns;
  for (const SqlColumnInfo& column : ParseCreateSql("any name", sql)) {
    columns.push_back({column.name, column.type_code, column.is_primary_key});
  }
  return columns;
}

Columns ParseBody(const std::string& body) { return Parse("CREATE TABLE t (" + body + ")"); }

Columns ParseVirtual(const std::string& body) {
  return Parse("CREATE VIRTUAL TABLE t USING fts3(" + body + ")");
}

TEST(TypeCodeTest, KnownWordsHaveTheirCodes) {
  const struct {
    const char* upper;
    const char* lower;
    int code;
  } kCases[] = {
      {"INTEGER", "integer", 0},     {"FLOAT", "float", 1},        {"DOUBLE", "double", 2},
      {"TEXT", "text", 3},           {"BLOB", "blob", 4},          {"VARCHAR", "varchar", 5},
      {"TIMESTAMP", "timestamp", 6}, {"STRING", "string", 7},      {"REAL", "real", 8},
      {"BOOL", "bool", 9},           {"UNSIGNED", "unsigned", 10}, {"DATETIME", "datetime", 11},
      {"BOOLEAN", "boolean", 12},    {"LONG", "long", 13},         {"INTERGER", "interger", 0},
      {"NTEXT", "ntextint", 15},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(TypeCodeOfName(row.upper), row.code) << row.upper;
    EXPECT_EQ(TypeCodeOfName(row.lower), row.code) << row.lower;
  }
  EXPECT_EQ(TypeCodeOfName("INT"), 0);
}

TEST(TypeCodeTest, OtherWordsHaveNone) {
  for (const char* word :
       {"int", "ntext", "NTEXTINT", "Integer", "INTEGER ", " INTEGER", "TEXT,", "VARCHAR(20)",
        "varchar(20)", "NUMERIC", "BIGINT", "INTEGE", "INTEGERS", "CHAR", "UNINDEXED", "\tTEXT"}) {
    EXPECT_EQ(TypeCodeOfName(word), -1) << word;
  }
}

TEST(TypeCodeTest, TablesHaveNineteenRows) {
  EXPECT_EQ(kUpperTypeWords.size(), 19U);
  EXPECT_EQ(kLowerTypeWords.size(), 19U);
}

TEST(ColumnWordTest, ForeignAndPrimaryInAnyCaseAreNone) {
  for (const char* word : {"FOREIGN", "foreign", "Foreign", "PRIMARY", "primary", "pRIMARy"}) {
    EXPECT_FALSE(IsColumnWord(word)) << word;
  }
  for (const char* word : {"", "a", "UNIQUE", "KEY", "FOREIGNER", "primary_key", "CHECK"}) {
    EXPECT_TRUE(IsColumnWord(word)) << word;
  }
}

TEST(TokenizeTest, WordInItsPlainSpelling) {
  EXPECT_TRUE(HasTokenize("tokenize=porter"));
  EXPECT_TRUE(HasTokenize("a untokenized b"));
  EXPECT_FALSE(HasTokenize("TOKENIZE=porter"));
  EXPECT_FALSE(HasTokenize(""));
}

TEST(ColumnDefinitionTest, ResultNameAndType) {
  const struct {
    std::string clause;
    bool is_last;
    int result;
    std::string name;
    int type_code;
  } kCases[] = {
      {"a TEXT", false, 0, "a", 3},
      {"a TEXT NOT NULL DEFAULT 7", false, 0, "a", 3},
      {"  a   TEXT  ", false, 0, "a", 3},
      {"'a' \"TEXT\"", false, 0, "a", 3},
      {"`a` BLOB", false, 0, "a", 4},
      {"[a] BLOB", false, 0, "[a]", 4},
      {"'a b' TEXT", false, 2, "a", -1},
      {"\na\n \nINTEGER\n", false, 0, "a", 0},
      {"a\nTEXT", false, 1, "aTEXT", 0},  // a line feed goes without leaving a space
      {"a\tTEXT", false, 1, "a\tTEXT", 0},
      {"a TEXT\tNOT", false, 2, "a", -1},
      {"a", false, 1, "a", 0},
      {"a", true, 0, "a", 0},
      {"", false, 1, "", 0},
      {"", true, 0, "", 0},
      {"   ", false, 1, "", 0},
      {"''", true, 0, "", 0},
      {"a VARCHAR(20)", false, 2, "a", -1},
      {"a VARCHAR (20)", false, 0, "a", 5},
      {"a DEFAULT 7", true, 2, "a", -1},
      {"FOREIGN KEY", false, 3, "", 0},
      {"primary KEY a", false, 3, "", 0},
      {"\"Primary\"", true, 3, "", 0},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.clause);
    SqlColumnInfo column;
    EXPECT_EQ(static_cast<int>(ParseColumnDefinition(row.clause, column, row.is_last)), row.result);
    EXPECT_EQ(column.name, row.name);
    EXPECT_EQ(column.type_code, row.type_code);
    EXPECT_FALSE(column.is_primary_key);
  }
}

TEST(CreateSqlTest, StatementsWithoutReadableBrackets) {
  for (const char* sql : {"", "CREATE TABLE t", "CREATE TABLE t (a TEXT", "CREATE TABLE t a TEXT)",
                          "CREATE TABLE t )a TEXT(", "CREATE TABLE t ()"}) {
    EXPECT_THAT(Parse(sql), IsEmpty()) << sql;
  }
}

TEST(CreateSqlTest, OrdinaryTables) {
  const struct {
    std::string sql;
    Columns columns;
  } kCases[] = {
      {"CREATE TABLE t (a INTEGER PRIMARY KEY, b TEXT)", {{"a", 0, true}, {"b", 3}}},
      {"create table t (a integer, b text)", {{"a", 0}, {"b", 3}}},
      {"nonsense (a integer, b text)", {{"a", 0}, {"b", 3}}},
      {"CREATE TABLE t (a INTEGER, b TEXT) WITHOUT ROWID", {{"a", 0}, {"b", 3}}},
      {"CREATE TABLE \"t\" (\"a\" INTEGER,\n  'b' TEXT,\n  `c` BLOB\n)",
       {{"a", 0}, {"b", 3}, {"c", 4}}},
      {"CREATE TABLE t (a INTEGER,, b TEXT)", {{"a", 0}, {"b", 3}}},
      {"CREATE TABLE t (a INTEGER, b TEXT,)", {{"a", 0}, {"b", 3}}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.sql);
    EXPECT_EQ(Parse(row.sql), row.columns);
  }
}

TEST(CreateSqlTest, BodiesOfOrdinaryTables) {
  const struct {
    std::string body;
    Columns columns;
  } kCases[] = {
      // Types.
      {"a INTEGER, b VARCHAR(20), c TEXT", {}},
      {"a INTEGER, b VARCHAR (20), c TEXT", {{"a", 0}, {"b", 5}, {"c", 3}}},
      {"a int, b TEXT", {}},
      {"a INT, b TEXT", {{"a", 0}, {"b", 3}}},
      {"a Integer, b TEXT", {}},
      {"a ntext, b TEXT", {}},
      {"a INTERGER, b ntextint", {{"a", 0}, {"b", 15}}},
      {"a INTEGER, b DEFAULT 7, c TEXT", {}},
      {"a INTEGER, CHECK (a > 0)", {}},
      {"a INTEGER, b NUMERIC(10,2), c TEXT", {}},
      // Names without a type.
      {"a, b TEXT", {{"b", 3}}},
      {"a TEXT, b", {{"a", 3}, {"b", 0}}},
      {"a, b", {{"b", 0}}},
      {"a TEXT, ", {{"a", 3}, {"", 0}}},
      {"a\tTEXT, b INTEGER", {{"b", 0}}},
      // A comma in brackets had cut the clause; it is joined without it.
      {"a DOUBLE (10,2), b TEXT", {{"a", 2}, {"b", 3}}},
      {"a INTEGER DEFAULT (max(1,2,3)), b TEXT", {{"a", 0}, {"b", 3}}},
      {"a INTEGER DEFAULT (1, b TEXT", {}},
      // Constraints.
      {"a TEXT, b TEXT, UNIQUE (a, b)", {{"a", 3}, {"b", 3}}},
      {"a TEXT, UNIQUE(a), b TEXT", {{"a", 3}}},
      {"a TEXT, unique \t\n(a), b TEXT", {{"a", 3}}},
      {"a TEXT UNIQUE, b TEXT", {{"a", 3}, {"b", 3}}},
      {"a TEXT UNIQUE CHECK (a > 0), b TEXT", {{"a", 3}, {"b", 3}}},
      {"a TEXT UNIQUE unique(a), b TEXT", {}},
      {"a TEXT UNIQUE (a) unique, b TEXT", {{"a", 3}, {"b", 3}}},
      {"a TEXT, CONSTRAINT c UNIQUE (a), b TEXT", {{"a", 3}}},
      {"a TEXT, constraint c check (a > 0), b TEXT", {{"a", 3}}},
      {"a TEXT CONSTRAINT c NOT NULL, b TEXT", {{"a", 3}, {"b", 3}}},
      {"a TEXT, PRIMARY KEY(a), b TEXT", {{"a", 3}}},
      {"a TEXT, PRIMARY KEY (a), b TEXT", {{"a", 3}}},
      {"a TEXT, primary key(a), b TEXT", {{"a", 3}}},
      {"a TEXT, primary key (a, b)", {{"a", 3}}},
      {"a TEXT, FOREIGN KEY(a) REFERENCES t(x), b TEXT", {{"a", 3}, {"b", 3}}},
      {"a TEXT, foreign KEY(a) REFERENCES t(x), b TEXT", {{"a", 3}, {"b", 3}}},
      // Keywords inside names.
      {"foreign_key TEXT, b TEXT", {{"b", 3}}},
      {"primary_key INTEGER, b TEXT", {{"primary_key", 0, true}, {"b", 3}}},
      {"PRIMARY_key INTEGER, b TEXT", {{"PRIMARY_key", 0, true}, {"b", 3}}},
      {"monkey_primary TEXT", {{"monkey_primary", 3, true}}},
      {"a TEXT PRIMARY, b KEY", {}},
      {"a INTEGER Primary Key", {{"a", 0}}},
      {"a TEXT PRIMARY KEY", {{"a", 3, true}}},
      // The tokenize option means nothing in an ordinary table.
      {"tokenize TEXT, b TEXT", {{"tokenize", 3}, {"b", 3}}},
  };
  const LogCapture log;
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.body);
    EXPECT_EQ(ParseBody(row.body), row.columns);
  }
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(CreateSqlTest, ClauseThatStartsWithAKeyWordIsLoggedAndDropped) {
  const LogCapture log;
  EXPECT_EQ(ParseBody("a TEXT, PRIMARY KEY a, b TEXT"), (Columns{{"a", 3}, {"b", 3}}));
  EXPECT_EQ(ParseBody("a TEXT, \"Foreign\" TEXT"), (Columns{{"a", 3}}));
  EXPECT_THAT(
      log.Lines(),
      ElementsAre(LogLine{2, "This field sql is not normal, field_string{ PRIMARY KEY a}"},
                  LogLine{2, "This field sql is not normal, field_string{ \"Foreign\" TEXT}"}));
}

TEST(CreateSqlTest, VirtualTables) {
  const struct {
    std::string body;
    Columns columns;
  } kCases[] = {
      {"a, b", {{"a", 3}, {"b", 0}}},
      {"a, b, c", {{"a", 3}, {"b", 3}, {"c", 0}}},
      {"a TEXT, b INTEGER", {{"a", 3}, {"b", 0}}},
      {"a int, b", {}},
      // An option in the first clause stands for the row id.
      {"tokenize=porter, a, b", {{"docid", 0, true}, {"a", 3}, {"b", 0}}},
      {"tokenize=porter", {{"docid", 0, true}}},
      {"tokenize=icu (x,y), a", {{"docid", 0, true}, {"a", 0}}},
      // In the middle it is dropped, as the last clause a column.
      {"a, tokenize=porter, b", {{"a", 3}, {"b", 0}}},
      {"a, tokenize=porter", {{"a", 3}, {"tokenize=porter", 0}}},
      {"a, tokenize=\"porter\"", {{"a", 3}, {"tokenize=porter", 0}}},
      {"a, tokenize=porter x", {}},
      // Constraints hold a place.
      {"a, CONSTRAINT c CHECK (a), b", {{"a", 3}, {"constraint", 17}, {"b", 0}}},
      {"a, PRIMARY KEY(a), b", {{"a", 3}, {"primary", 18}, {"b", 0}}},
      {"a, primary key (a, b)", {{"a", 3}, {"primary", 18}}},
      {"a, UNIQUE (a), b", {{"a", 3}}},
      {"a, FOREIGN KEY(a), b", {{"a", 3}, {"b", 0}}},
      {"primary_key, b", {{"primary_key", 3, true}, {"b", 0}}},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.body);
    EXPECT_EQ(ParseVirtual(row.body), row.columns);
  }
}

TEST(CreateSqlTest, TableIsVirtualByItsWordsInTwoSpellings) {
  EXPECT_EQ(Parse("create virtual table t using fts4(a, b)"), (Columns{{"a", 3}, {"b", 0}}));
  EXPECT_EQ(Parse("Create Virtual Table t using fts4(a, b)"), (Columns{{"b", 0}}));
  EXPECT_EQ(Parse("CREATE VIRTUAL  TABLE t using fts4(a, b)"), (Columns{{"b", 0}}));
}

}  // namespace
