#include "coverage_page.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <tuple>

#include "sqliteconfig/type_names.h"

namespace vexaconfigc {

namespace {

constexpr int32_t kSystemCount = 2;
constexpr int32_t kDataTypeCount = 12;

constexpr const char* kHead =
    R"(# What the configuration covers

This page is made from the sources in `config/`; change those, then run
`cmake --build build/release --target coverage_page`.

The live rows of a listed table come back whenever the library can read its live layout. Deleted
rows are looked for in the live layout and in the older ones that are *carved beside* it. A layout
that is *known only as the live one* moves columns, so rows of it are found while the database still
has it, and not after an upgrade. *Unreadable* layouts give nothing at all, not even live rows: the
library cannot make out their columns. A key is what tells one record from another; records that
agree in it count as one.

)";

// Notes and reasons are written over several lines and may hold what Markdown takes for markup.
std::string OneLine(const std::string& text) {
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string Cell(const std::string& text) {
  std::string cell;
  for (const char c : OneLine(text)) {
    if (c == '|' || c == '<' || c == '*') cell += '\\';
    cell += c;
  }
  return cell;
}

std::string Sentence(const std::string& text) {
  std::string sentence = Cell(text);
  if (!sentence.empty() && sentence.back() != '.') sentence += '.';
  return sentence;
}

std::string Code(const std::string& name) { return '`' + name + '`'; }

std::string LayoutName(const Layout& layout) {
  std::string name = Cell(layout.note);
  if (name.empty()) {
    name = layout.from_version == 0 ? "all versions"
                                    : "from version " + std::to_string(layout.from_version);
  }
  while (!name.empty() && name.back() == '.') name.pop_back();
  return name + " (" + std::to_string(layout.width) +
         (layout.width == 1 ? " column)" : " columns)");
}

std::string DatabaseOf(const Application& application, const Table& table) {
  return table.database.empty() ? application.database : table.database;
}

std::vector<std::string> DatabasesOf(const Application& application) {
  std::vector<std::string> names;
  const auto add = [&names](const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  };
  if (application.tables.empty()) add(application.database);
  for (const Table& table : application.tables) add(DatabaseOf(application, table));
  return names;
}

std::string CodeList(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + Code(name);
  return list;
}

class Page {
 public:
  explicit Page(const std::vector<Application>& applications) : applications_(applications) {}

  std::string Write() {
    text_ = kHead;
    WriteSummary();
    WriteMissing();
    for (const Application& application : applications_) WriteApplication(application);
    return text_;
  }

 private:
  void WriteSummary() {
    text_ +=
        "| System | Data type | Application | Database | Tables | of these deleted rows too "
        "| Not covered |\n|---|---|---|---|---|---|---|\n";
    for (const Application& application : applications_) {
      const auto deleted = std::count_if(application.tables.begin(), application.tables.end(),
                                         [](const Table& table) { return table.scan.deleted; });
      text_ += "| " + application.system + " | [" + application.data_type + "](#" +
               Anchor(application) + ") | " + Cell(application.name) + " | " +
               CodeList(DatabasesOf(application)) + " | " +
               std::to_string(application.tables.size()) + " | " + std::to_string(deleted) + " | " +
               std::to_string(GapCount(application)) + " |\n";
    }
    text_ += '\n';
  }

  static std::string Anchor(const Application& application) {
    std::string anchor = application.system + "-" + application.data_type;
    std::transform(anchor.begin(), anchor.end(), anchor.begin(), [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return anchor;
  }

  static size_t GapCount(const Application& application) {
    size_t count = application.not_covered.size();
    for (const Table& table : application.tables) {
      count += static_cast<size_t>(
          std::count_if(table.layouts.begin(), table.layouts.end(),
                        [](const Layout& layout) { return layout.unreadable; }));
    }
    return count;
  }

  // A data type that one system does not have leaves no other trace.
  void WriteMissing() {
    std::set<std::pair<std::string, std::string>> present;
    for (const Application& application : applications_) {
      present.emplace(application.system, application.data_type);
    }
    std::string missing;
    for (int32_t system = 0; system < kSystemCount; ++system) {
      for (int32_t data = 0; data < kDataTypeCount; ++data) {
        if (present.count({SystemTypeName(system), DataTypeName(data)}) != 0) continue;
        missing +=
            (missing.empty() ? "" : ", ") + SystemTypeName(system) + " " + DataTypeName(data);
      }
    }
    if (!missing.empty()) text_ += "Without a source, and so never scanned: " + missing + ".\n\n";
  }

  void WriteApplication(const Application& application) {
    text_ += "## " + application.system + " " + application.data_type + "\n\n";
    if (!application.name.empty()) text_ += Cell(application.name) + ", ";
    text_ += CodeList(DatabasesOf(application)) + ".";
    if (!application.scan_main_file) {
      text_ += " Deleted rows come out of the write-ahead log only.";
    }
    text_ += "\n\n";
    const bool several = DatabasesOf(application).size() > 1;
    for (const Table& table : application.tables) {
      WriteTable(table, several ? DatabaseOf(application, table) : "");
    }
    WriteGaps(application);
  }

  void WriteTable(const Table& table, const std::string& database) {
    text_ += "- **" + Code(table.name) + "**" + (database.empty() ? "" : " in " + Code(database)) +
             (table.scan.deleted ? ", live and deleted rows" : ", live rows only") + "\n";
    WriteLayouts(table, "carved beside the live layout",
                 [](const Layout& layout) { return !layout.live_only; });
    WriteLayouts(table, "known only as the live one",
                 [](const Layout& layout) { return layout.live_only && !layout.unreadable; });
    WriteLayouts(table, "unreadable", [](const Layout& layout) { return layout.unreadable; });
    std::vector<std::string> key;
    for (const ResultColumn& result : table.results) {
      if (result.unique) key.push_back(result.column);
    }
    text_ += "  - key: " + CodeList(key) + "\n";
    if (!table.limits.empty()) text_ += "  - limits: " + Sentence(table.limits) + "\n";
  }

  template <typename Predicate>
  void WriteLayouts(const Table& table, const std::string& title, Predicate is_listed) {
    std::string list;
    for (const Layout& layout : table.layouts) {
      if (is_listed(layout)) list += (list.empty() ? "" : "; ") + LayoutName(layout);
    }
    if (list.empty()) return;
    // Of a table that is not carved any layout is read as long as it is live.
    const bool carved = table.scan.deleted || title == "unreadable";
    text_ += "  - " + (carved ? title : "known layouts") + ": " + list + "\n";
  }

  void WriteGaps(const Application& application) {
    if (GapCount(application) == 0) {
      text_ += '\n';
      return;
    }
    text_ += "\nNot covered:\n\n";
    for (const NotCovered& gap : application.not_covered) {
      text_ += "- " + Cell(gap.what) + ": " + Sentence(gap.why) + "\n";
    }
    for (const Table& table : application.tables) {
      for (const Layout& layout : table.layouts) {
        if (!layout.unreadable) continue;
        text_ += "- " + Code(table.name) + " as of " + LayoutName(layout) + ": " +
                 Sentence(layout.fault) + "\n";
      }
    }
    text_ += '\n';
  }

  const std::vector<Application>& applications_;
  std::string text_;
};

}  // namespace

std::string CoveragePage(std::vector<Application> applications) {
  std::sort(applications.begin(), applications.end(),
            [](const Application& a, const Application& b) {
              return std::tie(a.system_code, a.data_code) < std::tie(b.system_code, b.data_code);
            });
  std::string text = Page(applications).Write();
  while (text.size() > 1 && text[text.size() - 2] == '\n') text.pop_back();
  return text;
}

std::string WriteTextFile(const std::string& path, const std::string& text) {
  std::ofstream stream(path, std::ios::binary);
  stream << text;
  stream.close();
  return stream ? "" : std::strerror(errno);
}

}  // namespace vexaconfigc
