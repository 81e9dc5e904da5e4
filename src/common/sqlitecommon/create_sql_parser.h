#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Type codes of a declared column type. The codes 17 and 18 belong to the placeholder columns of
// virtual tables.
inline constexpr int32_t kTypeCodeInteger = 0;
inline constexpr int32_t kTypeCodeText = 3;
inline constexpr int32_t kTypeCodeConstraint = 17;
inline constexpr int32_t kTypeCodePrimary = 18;

// One column of a CREATE TABLE text.
struct SqlColumnInfo {
  std::string name;  // quotes removed
  int32_t type_code = 0;
  bool is_primary_key = false;  // the clause holds the words of a primary key
};

// What ParseColumnDefinition made of a clause.
enum class ColumnClause {
  kColumn = 0,           // name and type
  kNameWithoutType = 1,  // and not the last clause
  kUnknownType = 2,
  kConstraint = 3,  // the clause starts with FOREIGN or PRIMARY
};

// Turns a CREATE TABLE text into its columns by splitting on commas and spaces; the empty list
// when the text cannot be read that way. The table's name is not used.
std::vector<SqlColumnInfo> ParseCreateSql(const std::string& table_name, const std::string& sql);

// Reads one clause into `out`. `is_last` tells that no clause follows: a lone name is then a
// column of type code 0.
ColumnClause ParseColumnDefinition(std::string clause, SqlColumnInfo& out, bool is_last);

// The code of a declared type word, compared exactly in its upper-case and its lower-case
// spelling; -1 for any other word.
int32_t TypeCodeOfName(const std::string& word);

// False for the words FOREIGN and PRIMARY in any case.
bool IsColumnWord(const std::string& word);

// True when the text holds "tokenize".
bool HasTokenize(const std::string& text);
