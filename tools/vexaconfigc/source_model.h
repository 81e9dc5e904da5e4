#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/sqlitecommon/create_sql_parser.h"

// What one source file says, as it stands there. Every record keeps the line (from 1) on which it
// begins, since a refusal that does not tell where to look is of little use.
namespace vexaconfigc {

// Codes of the kinds of values, as the configuration database holds them.
inline constexpr int kKindNone = -1;
inline constexpr int kKindInteger = 0;
inline constexpr int kKindReal = 1;
inline constexpr int kKindText = 2;
inline constexpr int kKindBlob = 3;

// One known CREATE statement of a table.
struct Layout {
  int line = 0;
  int32_t from_version = 0;
  // Known, but not carved beside other layouts: it gives names and conflicts to check against, and
  // no row in the database.
  bool live_only = false;
  // The library's parser reads no columns from it, or other ones than SQLite. That such a table
  // exists is worth stating, but there is nothing to check against it.
  bool unreadable = false;
  std::string note;
  std::string sql;
  std::vector<SqlColumnInfo> columns;  // filled by the layout check; none when unreadable
  size_t width = 0;                    // columns as SQLite counts them
  std::string fault;                   // of an unreadable one: what the parser stumbles over
  std::string alias;                   // column that stands for the row id, as SQLite sees it
};

// One column of the result table.
struct ResultColumn {
  int line = 0;
  std::string column;
  std::string type;
  int kind = kKindInteger;
  bool unique = false;
  bool row_id = false;
};

// What a plausible value of a column looks like.
struct Feature {
  int line = 0;
  std::string column;
  int kind = kKindInteger;
  int or_kind = kKindNone;
  bool not_null = false;
  int64_t min = 0;
  int64_t max = 0;
  std::string bytes;
  int bytes_line = 0;
  std::string not_bytes;
  int not_bytes_line = 0;
};

// How a table is scanned.
struct ScanFlags {
  bool small_table = false;
  bool virtual_table = false;
  bool deleted = false;
  int32_t flexible_cnt = 0;
  int flexible_cnt_line = 0;
  bool guess_row_id = false;
  int guess_row_id_line = 0;
  bool order_by_rowid = false;
};

struct Table {
  int line = 0;
  std::string name;
  std::string database;  // the file of this table, where it is not that of the application
  std::string limits;    // what recovery cannot reach, in words
  ScanFlags scan;
  std::vector<Layout> layouts;
  std::vector<ResultColumn> results;
  std::vector<Feature> features;
};

// Something of an application that is known and left out.
struct NotCovered {
  std::string what;
  std::string why;
};

// One source file: the tables of one application on one system.
struct Application {
  std::string file;
  int line = 0;
  int32_t system_code = 0;
  int32_t data_code = 0;
  std::string system;
  std::string data_type;
  std::string name;  // of the application, for people
  std::string database;
  bool scan_main_file = false;
  std::vector<NotCovered> not_covered;
  std::vector<Table> tables;
};

}  // namespace vexaconfigc
