#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace bench {

// What the values of a column are like.
enum class Fill {
  kAlias,     // the row id
  kGroup,     // low to high, a few of them hold most rows
  kNumber,    // low to high
  kTime,      // milliseconds that grow with the row
  kTimeNear,  // a little before the row's time, or 0
  kReal,
  kPhone,
  kName,     // a word or two
  kMessage,  // mostly short, several scripts, now and then longer than a page
  kConst,    // one text
  kBlob,     // low to high bytes
  kNull,
};

// The check that the configuration has for the column; kinds as kFieldInteger and so on.
struct Check {
  int kind = 0;
  bool is_not_null = false;
  int64_t min = 0;
  int64_t max = 0;
  int or_kind = -1;
};

struct Column {
  std::string name;
  std::string type;
  Fill fill = Fill::kNull;
  int64_t low = 0;
  int64_t high = 0;
  int null_percent = 0;
  std::optional<Check> check = std::nullopt;
  bool is_unique = false;
};

struct Table {
  std::string name;
  std::vector<Column> columns = {};
  // Rows were first written with that many columns, the others were added later. 0: never.
  size_t first_width = 0;
  int flexible_cnt = 0;
};

// A short-message store: 20 columns, of which the oldest rows have 15, and features as the shipped
// configuration has them.
Table SmsTable();

// A chat table of 32 columns.
Table WideTable();

// Ten tables of different shape, as one application has them.
std::vector<Table> AppTables();

// The CREATE text of the table with its first `width` columns; columns that it does not have are
// made up behind them.
std::string CreateText(const Table& table, size_t width);

}  // namespace bench
