#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recovery/value.h"

namespace recovery {

// How the values of one column are made, such as "group 40 ? 0.1".
struct Recipe {
  std::string kind;
  std::vector<std::string> args;
  double null_share = 0;
};

struct Column {
  std::string name;
  std::string declared_type;
  bool not_null = false;
  std::string default_sql;  // empty: none
  Value default_value;
};

struct Layout {
  int version = 0;  // of the operating system
  std::string label;
  std::string sql;
  std::vector<Column> columns;
  std::optional<size_t> alias;  // the column that is the row id, NULL in the record
  bool without_rowid = false;
};

struct TableFacts {
  std::string name;
  double share = 1;
  std::string conversation;  // rows with equal values here are deleted together
  std::string age;           // a growing column by which old rows are deleted
  std::map<std::string, Recipe> update;
  std::vector<Layout> layouts;  // oldest first
  std::map<std::string, Recipe> values;
  std::optional<Recipe> others;

  const Recipe& RecipeOf(const std::string& column) const;
};

struct DatabaseFacts {
  std::string file;
  std::string secure_delete = "off";
  std::string auto_vacuum = "none";
  bool wal = false;
  std::string encoding = "UTF-8";
  std::vector<TableFacts> tables;

  // The longest list of layouts: how many phones of different age there are.
  size_t Generations() const;

  // The layout of a table on the phone of a generation; 0 is the newest one.
  static size_t LayoutOf(const TableFacts& table, size_t generation);
};

struct Facts {
  std::string system;
  std::string data_type;
  std::vector<DatabaseFacts> databases;

  std::string Name() const { return system + "/" + data_type; }
};

}  // namespace recovery
