#include "demo_report.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>
#include <set>
#include <string_view>

#include "demo_standing.h"
#include "demo_texts.h"
#include "sqlite_db.h"

namespace vexascan {
namespace {

constexpr std::size_t kSamplesKept = 3;
constexpr std::size_t kExcerptColumns = 60;
constexpr int kKindWidth = 44;
constexpr std::array kDeletedFates{Fate::kFreeblock, Fate::kFreedPages, Fate::kLogOnly};

using Row = std::vector<Value>;

std::string_view Words(Fate fate) {
  switch (fate) {
    case Fate::kFreeblock:
      return "single messages, pages live on";
    case Fate::kFreedPages:
      return "a whole conversation, pages freed";
    case Fate::kLogOnly:
      return "written and deleted in the log only";
    case Fate::kLive:
      break;
  }
  return "live";
}

// Places in kMessageColumns of the columns that the result has, in the result's order.
std::vector<std::size_t> ResultColumns(const Database& result) {
  std::vector<std::size_t> places;
  for (const std::string& name : ColumnNames(result, "main", "sms")) {
    const auto* const column = std::find(kMessageColumns.begin(), kMessageColumns.end(), name);
    if (column != kMessageColumns.end()) {
      places.push_back(static_cast<std::size_t>(column - kMessageColumns.begin()));
    }
  }
  return places;
}

Row RowOf(const Message& message, const std::vector<std::size_t>& places) {
  Row row;
  for (const std::size_t place : places) {
    row.push_back(message.values.at(place));
  }
  return row;
}

std::vector<Row> ResultRows(const Database& result, const std::vector<std::size_t>& places) {
  std::string list;
  for (const std::size_t place : places) {
    list += (list.empty() ? "" : ", ") + QuoteName(kMessageColumns.at(place));
  }
  std::vector<Row> rows;
  if (list.empty()) {
    return rows;  // the configuration knows no such table
  }
  Statement select = result.Prepare("select " + list + " from sms");
  while (select.Step()) {
    Row row;
    for (int i = 0; i < select.ColumnCount(); ++i) {
      row.push_back(select.Column(i));
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

int Percent(int part, int whole) { return whole == 0 ? 0 : part * 100 / whole; }

}  // namespace

bool DemoReport::GoodEnough() const {
  return std::all_of(kinds.begin(), kinds.end(),
                     [](const KindReport& kind) { return kind.GoodEnough(); });
}

DemoReport Reckon(const std::vector<Message>& messages, const std::filesystem::path& database,
                  const std::filesystem::path& result_path) {
  const StandingBytes bytes(database);
  const Database result = Database::OpenImmutable(result_path);
  const std::vector<std::size_t> places = ResultColumns(result);
  const std::vector<Row> rows = ResultRows(result, places);
  const std::set<Row> found(rows.begin(), rows.end());

  DemoReport report;
  std::set<Row> written;
  for (const Message& message : messages) {
    written.insert(RowOf(message, places));
  }
  report.invented = static_cast<int>(std::count_if(
      rows.begin(), rows.end(), [&written](const Row& row) { return !written.contains(row); }));

  for (const Fate fate : kDeletedFates) {
    KindReport kind{.fate = fate, .samples = {}};
    for (const Message& message : messages) {
      if (message.fate != fate) {
        continue;
      }
      const bool stands = bytes.Holds(message);
      const bool came_back = !places.empty() && found.contains(RowOf(message, places));
      ++kind.deleted;
      kind.standing += stands ? 1 : 0;
      kind.came_back += came_back ? 1 : 0;
      kind.came_back_standing += stands && came_back ? 1 : 0;
      // Neighbours are alike; every seventh shows more of the scripts.
      if (came_back && kind.came_back % 7 == 3 && kind.samples.size() < kSamplesKept) {
        kind.samples.push_back(message.body());
      }
    }
    report.kinds.push_back(kind);
  }
  return report;
}

void PrintReport(const DemoReport& report, std::ostream& out) {
  out << "\nDeleted messages\n  " << std::left << std::setw(kKindWidth) << "how" << std::right
      << std::setw(8) << "deleted" << std::setw(13) << "bytes stand" << std::setw(11) << "came back"
      << "\n";
  for (const KindReport& kind : report.kinds) {
    out << "  " << std::left << std::setw(kKindWidth) << Words(kind.fate) << std::right
        << std::setw(8) << kind.deleted << std::setw(13) << kind.standing << std::setw(11)
        << kind.came_back << "   " << Percent(kind.came_back_standing, kind.standing)
        << " % of those that stand\n";
  }
  out << "  Damaged or mixed rows, which equal none that was ever written: " << report.invented
      << "\n";
  for (const KindReport& kind : report.kinds) {
    out << "\nCame back (" << Words(kind.fate) << "), for example\n";
    for (const std::string& text : kind.samples) {
      out << "  " << Excerpt(text, kExcerptColumns) << "\n";
    }
  }
}

}  // namespace vexascan
