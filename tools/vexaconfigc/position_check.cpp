#include "position_check.h"

#include <algorithm>
#include <set>

#include "layout_check.h"

namespace vexaconfigc {

namespace {

std::string WidthText(const Layout& layout) {
  return "the layout of " + std::to_string(layout.columns.size()) + " columns";
}

std::vector<const Layout*> CarvedLayouts(const Table& table) {
  std::vector<const Layout*> carved;
  for (const Layout& layout : table.layouts) {
    if (!layout.live_only && !layout.columns.empty()) carved.push_back(&layout);
  }
  return carved;
}

// Result columns besides the row id, which is not read from the record, and featured columns.
std::vector<std::string> ColumnsThatMatter(const Table& table, bool with_features) {
  std::set<std::string> seen;
  std::vector<std::string> columns;
  const auto add = [&](const std::string& column) {
    if (!column.empty() && seen.insert(column).second) columns.push_back(column);
  };
  for (const ResultColumn& result : table.results) {
    if (!result.row_id) add(result.column);
  }
  if (with_features) {
    for (const Feature& feature : table.features) add(feature.column);
  }
  return columns;
}

bool IsResult(const Table& table, const std::string& column) {
  return std::any_of(table.results.begin(), table.results.end(),
                     [&](const ResultColumn& result) { return result.column == column; });
}

// Which layout settles the position of a column: the first that holds it.
const Layout* FirstHolder(const std::vector<const Layout*>& layouts, const std::string& column) {
  for (const Layout* layout : layouts) {
    if (PositionOf(*layout, column) >= 0) return layout;
  }
  return nullptr;
}

void CheckColumn(const Table& table, const std::vector<const Layout*>& carved,
                 const std::string& column, const std::string& file, Diagnostics& diagnostics) {
  const Layout* first = FirstHolder(carved, column);
  if (first == nullptr) return;
  const int position = PositionOf(*first, column);
  const bool is_result = IsResult(table, column);
  for (const Layout* layout : carved) {
    const int other = PositionOf(*layout, column);
    if (other == position) continue;
    if (other >= 0) {
      diagnostics.Error(file, layout->line,
                        "this layout moves the " + std::string(is_result ? "result" : "featured") +
                            " column '" + column + "' to position " + std::to_string(other) +
                            "; in " + WidthText(*first) + " it stands at " +
                            std::to_string(position));
    } else if (static_cast<size_t>(position) < layout->columns.size()) {
      const std::string& occupant = layout->columns[static_cast<size_t>(position)].name;
      const std::string words = "column '" + occupant + "' of this layout stands at position " +
                                std::to_string(position) + ", where " + WidthText(*first) +
                                " has '" + column + "'";
      if (is_result) {
        diagnostics.Error(file, layout->line, words + ", a result column");
      } else {
        diagnostics.Warning(file, layout->line, words + ", whose feature judges it");
      }
    }
  }
}

// A record that lacks a featured column is refused.
void WarnOfLateFeature(const Table& table, const std::vector<const Layout*>& carved,
                       const Feature& feature, const std::string& file, Diagnostics& diagnostics) {
  for (const Layout* holder : carved) {
    const int position = PositionOf(*holder, feature.column);
    if (position < 0) continue;
    for (const Layout* layout : carved) {
      if (layout->columns.size() <= static_cast<size_t>(position)) {
        diagnostics.Warning(file, feature.line,
                            "the feature on the late column '" + feature.column +
                                "' switches off " + WidthText(*layout));
      }
    }
    break;
  }
  for (const Layout& layout : table.layouts) {
    const int position = PositionOf(layout, feature.column);
    const int width = static_cast<int>(layout.columns.size());
    if (width < 20 || table.scan.flexible_cnt == 0 || position < 0) continue;
    if (position >= width - 1 - table.scan.flexible_cnt) {
      diagnostics.Warning(file, feature.line,
                          "the feature on the late column '" + feature.column +
                              "' refuses the short records that flexible_cnt lets through in " +
                              WidthText(layout));
    }
  }
}

}  // namespace

void CheckPositions(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  const std::vector<const Layout*> carved = CarvedLayouts(table);
  for (const std::string& column : ColumnsThatMatter(table, true)) {
    CheckColumn(table, carved, column, file, diagnostics);
  }
  if (!table.scan.deleted) return;  // features judge carved records only
  for (const Feature& feature : table.features) {
    WarnOfLateFeature(table, carved, feature, file, diagnostics);
  }
}

std::vector<std::string> DescribeConflicts(const Table& table) {
  std::vector<std::string> lines;
  const std::vector<const Layout*> carved = CarvedLayouts(table);
  if (carved.empty() || !table.scan.deleted) return lines;
  for (const Layout& live : table.layouts) {
    if (!live.live_only) continue;
    std::string moved;
    for (const std::string& column : ColumnsThatMatter(table, true)) {
      const Layout* holder = FirstHolder(carved, column);
      const int position = PositionOf(live, column);
      if (holder == nullptr || position < 0 || position == PositionOf(*holder, column)) continue;
      moved += (moved.empty() ? "" : ", ") + column;
    }
    if (moved.empty()) continue;
    lines.push_back(table.name + ": with " + WidthText(live) + " (line " +
                    std::to_string(live.line) + ") live, carved rows are misread in " + moved);
  }
  return lines;
}

}  // namespace vexaconfigc
