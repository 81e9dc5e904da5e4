#include "position_check.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "layout_check.h"

namespace vexaconfigc {

namespace {

bool IsResult(const Table& table, const std::string& column) {
  return std::any_of(table.results.begin(), table.results.end(),
                     [&](const ResultColumn& result) { return result.column == column; });
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

// True when a record of the layout may lack the column and be carved all the same.
bool MayBeShort(const Table& table, const Layout& layout, const std::string& column) {
  constexpr int kWideTable = 20;
  const int position = PositionOf(layout, column);
  const int width = static_cast<int>(layout.columns.size());
  if (width < kWideTable || table.scan.flexible_cnt == 0 || position < 0) return false;
  return position >= width - 1 - table.scan.flexible_cnt;
}

// "in the layout of 5 columns (line 12)", or of several the first and how many follow.
std::string InLayouts(const std::vector<const Layout*>& layouts) {
  std::string words = "in " + WidthText(*layouts.front());
  if (layouts.size() > 1) words += " and in " + std::to_string(layouts.size() - 1) + " more";
  return words;
}

template <typename Predicate>
std::vector<const Layout*> LayoutsThat(const std::vector<const Layout*>& layouts,
                                       Predicate predicate) {
  std::vector<const Layout*> chosen;
  std::copy_if(layouts.begin(), layouts.end(), std::back_inserter(chosen),
               [&](const Layout* layout) { return predicate(*layout); });
  return chosen;
}

std::vector<const Layout*> ShortLayouts(const Table& table, const std::string& column) {
  std::vector<const Layout*> all;
  for (const Layout& layout : table.layouts) all.push_back(&layout);
  return LayoutsThat(all, [&](const Layout& layout) { return MayBeShort(table, layout, column); });
}

// A record that lacks a featured column is refused.
void WarnOfLateFeature(const Table& table, const std::vector<const Layout*>& carved,
                       const Feature& feature, const std::string& file, Diagnostics& diagnostics) {
  const std::string name = "the feature on the late column '" + feature.column + "'";
  if (const Layout* holder = FirstHolder(carved, feature.column)) {
    const auto position = static_cast<size_t>(PositionOf(*holder, feature.column));
    for (const Layout* layout : carved) {
      if (layout->columns.size() > position) continue;
      diagnostics.Warning(file, feature.line, name + " switches off " + WidthText(*layout));
    }
  }
  if (const auto layouts = ShortLayouts(table, feature.column); !layouts.empty()) {
    diagnostics.Warning(
        file, feature.line,
        name + " refuses the short records that flexible_cnt lets through " + InLayouts(layouts));
  }
}

// True when a later layout added the column to this one.
bool IsAddedLater(const Table& table, const Layout& layout, const std::string& column) {
  return PositionOf(layout, column) < 0 &&
         std::any_of(table.layouts.begin(), table.layouts.end(), [&](const Layout& later) {
           return PositionOf(later, column) >= 0 && later.from_version >= layout.from_version &&
                  later.columns.size() > layout.columns.size();
         });
}

// A record that lacks a column is carved with 0 or an empty text there, and SQLite gives a live row
// its default: the key tells the two apart although they are one.
void WarnOfLateKey(const Table& table, const std::vector<const Layout*>& carved,
                   const ResultColumn& result, const std::string& file, Diagnostics& diagnostics) {
  const std::string name = "the unique column '" + result.column + "' is missing ";
  const auto older = LayoutsThat(
      carved, [&](const Layout& layout) { return IsAddedLater(table, layout, result.column); });
  if (!older.empty()) {
    diagnostics.Warning(
        file, result.line,
        name + InLayouts(older) + ": their rows get 0 or an empty text, which equals no live row");
  }
  if (const auto layouts = ShortLayouts(table, result.column); !layouts.empty()) {
    diagnostics.Warning(
        file, result.line,
        name + "in the short records that flexible_cnt lets through " + InLayouts(layouts));
  }
}

}  // namespace

std::vector<std::string> ColumnsThatMatter(const Table& table) {
  std::set<std::string> seen;
  std::vector<std::string> columns;
  const auto add = [&](const std::string& column) {
    if (!column.empty() && seen.insert(column).second) columns.push_back(column);
  };
  for (const ResultColumn& result : table.results) {
    if (!result.row_id) add(result.column);
  }
  for (const Feature& feature : table.features) add(feature.column);
  return columns;
}

const Layout* FirstHolder(const std::vector<const Layout*>& layouts, const std::string& column) {
  for (const Layout* layout : layouts) {
    if (PositionOf(*layout, column) >= 0) return layout;
  }
  return nullptr;
}

void CheckPositions(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  const std::vector<const Layout*> carved = CarvedLayouts(table);
  for (const std::string& column : ColumnsThatMatter(table)) {
    CheckColumn(table, carved, column, file, diagnostics);
  }
  if (!table.scan.deleted) return;  // features judge carved records only
  for (const Feature& feature : table.features) {
    WarnOfLateFeature(table, carved, feature, file, diagnostics);
  }
  for (const ResultColumn& result : table.results) {
    if (result.unique && !result.row_id) {
      WarnOfLateKey(table, carved, result, file, diagnostics);
    }
  }
}

}  // namespace vexaconfigc
