#include "layout_check.h"

#include <algorithm>

#include "memory_database.h"

namespace vexaconfigc {

namespace {

// Below this width the library never merges layouts, and short records are refused.
constexpr size_t kWideTable = 20;

class LayoutReader {
 public:
  LayoutReader(Table& table, const std::string& file, Diagnostics& diagnostics)
      : table_(table), file_(file), diagnostics_(diagnostics) {}

  void Read() {
    if (table_.layouts.empty()) {
      diagnostics_.Error(file_, table_.line, "table '" + table_.name + "' has no layout");
    }
    for (Layout& layout : table_.layouts) {
      if (layout.sql.empty()) continue;  // reported already
      ReadLayout(layout);
    }
    CheckWidths();
    CheckFlexibleCount();
  }

 private:
  void ReadLayout(Layout& layout) {
    layout.columns = ParseCreateSql(table_.name, layout.sql);
    std::string fault = layout.columns.empty()
                            ? "the CREATE statement cannot be read: " + UnreadableClause(layout)
                            : "";
    layout.width = layout.columns.size();
    if (!fault.empty() && !layout.unreadable) {
      Error(layout, fault);
      return;
    }
    if (!table_.scan.virtual_table) {  // its module need not be in this SQLite
      MemoryDatabase database;
      if (const std::string refusal = database.Run(layout.sql); !refusal.empty()) {
        Error(layout, "SQLite refuses the CREATE statement: " + refusal);
        return;
      }
      const std::vector<std::string> names = database.ColumnNames(table_.name);
      layout.width = names.size();
      if (names.empty()) {
        Error(layout, "the CREATE statement makes another table than '" + table_.name + "'");
        return;
      }
      if (fault.empty()) fault = ReadingFault(layout, names);
      layout.alias = database.RowIdAlias(table_.name);
      if (table_.scan.deleted && !layout.unreadable && !database.HasRowIds(table_.name)) {
        Error(layout,
              "the rows of a table WITHOUT ROWID cannot be carved; set scan: deleted: false");
      }
    }
    if (layout.unreadable) {
      if (fault.empty()) Error(layout, "the layout can be read: it is not unreadable");
      layout.columns.clear();
      layout.fault = fault;
    } else if (!fault.empty()) {
      Error(layout, fault);
    } else {
      CheckFirstColumn(layout);
    }
  }

  // The first clause that empties the list, as far as cutting at every comma tells.
  static std::string UnreadableClause(const Layout& layout) {
    const size_t open = layout.sql.find('(');
    const size_t close = layout.sql.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close < open) {
      return "it has no column list in brackets";
    }
    std::string body = layout.sql.substr(open + 1, close - open - 1);
    for (size_t begin = 0; begin <= body.size();) {
      const size_t comma = std::min(body.find(',', begin), body.size());
      const std::string clause = body.substr(begin, comma - begin);
      SqlColumnInfo column;
      if (ParseColumnDefinition(clause, column, false) == ColumnClause::kUnknownType) {
        return "the type of column '" + column.name + "' is no type word";
      }
      begin = comma + 1;
    }
    return "no column is left of it";
  }

  // The parser cuts at commas and drops what it takes for a constraint. SQLite knows better, so a
  // difference is a statement that has to be written in a plainer form.
  static std::string ReadingFault(const Layout& layout, const std::vector<std::string>& names) {
    const bool same = std::equal(
        names.begin(), names.end(), layout.columns.begin(), layout.columns.end(),
        [](const std::string& name, const SqlColumnInfo& column) { return name == column.name; });
    if (same) return "";
    return "the CREATE statement reads as " + std::to_string(layout.columns.size()) +
           " columns, but SQLite makes other ones, " + std::to_string(names.size()) + " of them";
  }

  // A first column that is a primary key is taken for the row id alias, which holds NULL in the
  // record. Any other key stands in the record, and all values would be read one column late.
  void CheckFirstColumn(const Layout& layout) {
    const SqlColumnInfo& first = layout.columns.front();
    if (!table_.scan.deleted || table_.scan.virtual_table || !first.is_primary_key) return;
    if (first.type_code != kTypeCodeInteger) {
      Error(layout, "the first column '" + first.name +
                        "' is a primary key but no INTEGER, so that deleted records are misread; "
                        "set scan: deleted: false");
    } else if (layout.alias != first.name) {
      Error(layout, "the first column '" + first.name +
                        "' is taken for the row id, but SQLite keeps its value in the record, so "
                        "that deleted records are misread; set scan: deleted: false");
    }
  }

  void CheckWidths() {
    for (size_t i = 0; i < table_.layouts.size(); ++i) {
      const Layout& layout = table_.layouts[i];
      if (layout.live_only || layout.columns.empty()) continue;
      for (size_t j = 0; j < i; ++j) {
        const Layout& earlier = table_.layouts[j];
        if (!earlier.live_only && earlier.columns.size() == layout.columns.size()) {
          Error(layout, "two layouts of one width: " + WidthText(earlier) +
                            " is taken and this one has no effect");
        }
      }
    }
  }

  // Of layouts that only differ in fewer than flexible_cnt trailing columns the library keeps the
  // widest alone. When the narrower one is live, no live layout is left, and the table vanishes.
  void CheckFlexibleCount() {
    size_t widest = 0;
    for (const Layout& narrow : table_.layouts) {
      widest = std::max(widest, narrow.columns.size());
      for (const Layout& wide : table_.layouts) {
        if (wide.live_only || !IsPrefix(narrow, wide)) continue;
        const size_t difference = wide.columns.size() - narrow.columns.size();
        if (difference < static_cast<size_t>(table_.scan.flexible_cnt)) {
          diagnostics_.Error(file_, table_.scan.flexible_cnt_line,
                             "flexible_cnt " + std::to_string(table_.scan.flexible_cnt) +
                                 " merges " + WidthText(narrow) + " into " + WidthText(wide) +
                                 "; it may be " + std::to_string(difference) + " at most");
        }
      }
    }
    if (table_.scan.flexible_cnt > 0 && widest != 0 && widest < kWideTable) {
      diagnostics_.Warning(file_, table_.scan.flexible_cnt_line,
                           "flexible_cnt acts only on tables of at least 20 columns");
    }
  }

  static bool IsPrefix(const Layout& narrow, const Layout& wide) {
    return narrow.columns.size() >= kWideTable && narrow.columns.size() < wide.columns.size() &&
           std::equal(narrow.columns.begin(), narrow.columns.end(), wide.columns.begin(),
                      [](const SqlColumnInfo& a, const SqlColumnInfo& b) {
                        return a.name == b.name && a.type_code == b.type_code;
                      });
  }

  void Error(const Layout& layout, const std::string& words) {
    diagnostics_.Error(file_, layout.line, words);
  }

  Table& table_;
  const std::string& file_;
  Diagnostics& diagnostics_;
};

}  // namespace

std::string WidthText(const Layout& layout) {
  return "the layout of " + std::to_string(layout.columns.size()) + " columns (line " +
         std::to_string(layout.line) + ")";
}

std::vector<const Layout*> CarvedLayouts(const Table& table) {
  std::vector<const Layout*> carved;
  for (const Layout& layout : table.layouts) {
    if (!layout.live_only && !layout.columns.empty()) carved.push_back(&layout);
  }
  return carved;
}

int PositionOf(const Layout& layout, const std::string& column) {
  const auto found =
      std::find_if(layout.columns.begin(), layout.columns.end(),
                   [&column](const SqlColumnInfo& info) { return info.name == column; });
  return found == layout.columns.end() ? -1 : static_cast<int>(found - layout.columns.begin());
}

bool AnyLayoutHolds(const Table& table, const std::string& column) {
  return std::any_of(table.layouts.begin(), table.layouts.end(),
                     [&column](const Layout& layout) { return PositionOf(layout, column) >= 0; });
}

bool IsAlias(const Table& table, const std::string& column) {
  return std::any_of(table.layouts.begin(), table.layouts.end(), [&column](const Layout& layout) {
    if (layout.columns.empty()) return false;
    const SqlColumnInfo& first = layout.columns.front();
    return layout.alias == column || (first.is_primary_key && first.name == column);
  });
}

void ReadLayouts(Table& table, const std::string& file, Diagnostics& diagnostics) {
  LayoutReader(table, file, diagnostics).Read();
}

}  // namespace vexaconfigc
