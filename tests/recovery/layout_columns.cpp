#include "recovery/layout_columns.h"

#include <strings.h>

#include <stdexcept>

#include "recovery/database.h"

namespace recovery {
namespace {

bool HasRowId(Database& db, const std::string& table) {
  try {
    db.Run("SELECT rowid FROM " + Quoted(table));
    return true;
  } catch (const DatabaseError&) {
    return false;
  }
}

}  // namespace

void ReadColumns(const std::string& table, Layout& layout) {
  Database db(":memory:");
  db.Run(layout.sql);
  if (db.Number("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = " +
                SqlText(table)) != 1) {
    throw std::runtime_error("the statement makes no table '" + table + "'");
  }
  layout.without_rowid = !HasRowId(db, table);
  size_t keys = 0;
  std::optional<size_t> key;
  for (const Row& row : db.Rows("PRAGMA table_info(" + Quoted(table) + ")")) {
    Column column{std::get<std::string>(row[1]),
                  std::get<std::string>(row[2]),
                  std::get<int64_t>(row[3]) != 0,
                  {},
                  {}};
    if (const auto* text = std::get_if<std::string>(&row[4])) {
      column.default_sql = *text;
      column.default_value = db.One("SELECT " + *text);
    }
    if (std::get<int64_t>(row[5]) != 0) {
      ++keys;
      if (strcasecmp(column.declared_type.c_str(), "INTEGER") == 0) key = layout.columns.size();
    }
    layout.columns.push_back(std::move(column));
  }
  if (keys == 1 && !layout.without_rowid) layout.alias = key;
}

}  // namespace recovery
