#include "conflict_report.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#include "layout_check.h"
#include "position_check.h"

namespace vexaconfigc {

namespace {

class TableReport {
 public:
  TableReport(const Table& table, std::ostream& out)
      : table_(table), carved_(CarvedLayouts(table)), out_(out) {}

  void Print() {
    out_ << "  " << table_.name << ": " << table_.results.size() << " result columns, "
         << table_.features.size() << " features" << (table_.scan.deleted ? "" : ", live rows only")
         << '\n';
    for (size_t i = 0; i < table_.layouts.size(); ++i) PrintLayout(i);
    if (!table_.scan.deleted) return;  // features judge carved records only
    PrintKey();
    for (const Feature& feature : table_.features) PrintFeature(feature);
    for (const Layout* narrow : carved_) PrintNarrowLayout(*narrow);
    for (const Layout& live : table_.layouts) {
      if (live.live_only) PrintMisreadColumns(live);
    }
  }

 private:
  // A column of other layouts, as (position, name), with the numbers of both sides.
  struct Meeting {
    std::string holders;
    std::string others;
  };

  static std::string Number(size_t index) { return '#' + std::to_string(index + 1); }

  static void AddNumber(std::string& list, const std::string& number) {
    const std::string word = ' ' + number;
    const size_t place = list.find(word);
    const bool held = place != std::string::npos &&
                      (place + word.size() == list.size() || list[place + word.size()] == ' ');
    if (!held) list += word;
  }

  void PrintLayout(size_t index) {
    const Layout& layout = table_.layouts[index];
    out_ << "    " << Number(index) << ' ' << layout.width << " columns (line " << layout.line
         << (layout.note.empty() ? "" : ", " + layout.note) << ')';
    if (layout.unreadable) {
      out_ << ", unreadable: " << layout.fault;
    } else if (layout.live_only) {
      out_ << ", only when live";
    }
    out_ << '\n';
  }

  // A NULL equals nothing, so that a key with one keeps no carved copy of a live row out. A feature
  // that asks for a value refuses such copies.
  void PrintKey() {
    for (const ResultColumn& result : table_.results) {
      const bool is_asked_for = std::any_of(
          table_.features.begin(), table_.features.end(), [&result](const Feature& feature) {
            return feature.column == result.column && feature.not_null;
          });
      if (!result.unique || result.row_id || is_asked_for) continue;
      out_ << "    unique column '" << result.column
           << "' has no feature with not_null: carved copies of live rows come back where it is "
              "NULL\n";
    }
  }

  // Only one layout is live at a time; a carved one is there always.
  static bool CanMeet(const Layout& a, const Layout& b) {
    return &a != &b && !a.columns.empty() && !b.columns.empty() && !(a.live_only && b.live_only);
  }

  void PrintFeature(const Feature& feature) {
    std::map<std::pair<int, std::string>, Meeting> meetings;
    for (size_t i = 0; i < table_.layouts.size(); ++i) {
      const int position = PositionOf(table_.layouts[i], feature.column);
      if (position < 0) continue;
      for (size_t j = 0; j < table_.layouts.size(); ++j) {
        const Layout& other = table_.layouts[j];
        if (!CanMeet(table_.layouts[i], other)) continue;
        const auto place = static_cast<size_t>(position);
        const std::string occupant =
            place < other.columns.size() ? other.columns[place].name : std::string();
        if (occupant == feature.column) continue;
        Meeting& meeting = meetings[{position, occupant}];
        AddNumber(meeting.holders, Number(i));
        AddNumber(meeting.others, Number(j));
      }
    }
    for (const auto& [place, meeting] : meetings) {
      out_ << "    feature '" << feature.column << "' at position " << place.first << " of"
           << meeting.holders;
      if (place.second.empty()) {
        out_ << " switches off" << meeting.others << '\n';
      } else {
        out_ << " falls on '" << place.second << "' of" << meeting.others << '\n';
      }
    }
  }

  // The head of a wide row reads as a narrow one whose values begin some bytes too early.
  void PrintNarrowLayout(const Layout& narrow) {
    bool is_narrower = false;
    for (const Layout& other : table_.layouts) {
      is_narrower = is_narrower || other.columns.size() > narrow.columns.size();
    }
    if (!is_narrower) return;
    std::string guards;
    for (const Feature& feature : table_.features) {
      if (PositionOf(narrow, feature.column) < 0) continue;
      guards += (guards.empty() ? "" : ", ") + feature.column;
    }
    out_ << "    " << Number(static_cast<size_t>(&narrow - table_.layouts.data()))
         << " fits the head of every wider row; what can refuse that: "
         << (guards.empty() ? "nothing" : guards) << '\n';
  }

  // The last layout that holds a column settles its place for all.
  void PrintMisreadColumns(const Layout& live) {
    std::string moved;
    for (const std::string& column : ColumnsThatMatter(table_)) {
      const Layout* holder = FirstHolder(carved_, column);
      const int position = PositionOf(live, column);
      if (holder == nullptr || position < 0 || position == PositionOf(*holder, column)) continue;
      moved += (moved.empty() ? "" : ", ") + column;
    }
    if (moved.empty()) return;
    out_ << "    with " << WidthText(live) << " live, carved rows are misread in " << moved << '\n';
  }

  const Table& table_;
  std::vector<const Layout*> carved_;
  std::ostream& out_;
};

}  // namespace

void PrintReport(const std::vector<Application>& applications, std::ostream& out) {
  for (const Application& application : applications) {
    out << application.system << '/' << application.data_type << " (" << application.database
        << ")\n";
    for (const Table& table : application.tables) TableReport(table, out).Print();
  }
}

}  // namespace vexaconfigc
