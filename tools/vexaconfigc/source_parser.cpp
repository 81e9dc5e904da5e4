#include "source_parser.h"

#include <filesystem>

#include "map_reader.h"
#include "sqliteconfig/type_names.h"

namespace vexaconfigc {

namespace {

constexpr int32_t kSystemCount = 2;
constexpr int32_t kDataTypeCount = 12;

class SourceParser {
 public:
  SourceParser(std::string file, Diagnostics& diagnostics)
      : file_(std::move(file)), diagnostics_(diagnostics) {}

  Application Parse(const YAML::Node& root) {
    MapReader map(root, "the file",
                  {"system", "data_type", "application", "database", "scan_main_file", "note",
                   "not_covered", "tables"},
                  file_, diagnostics_);
    Application application;
    application.file = file_;
    application.line = map.line();
    application.system = map.Text("system");
    application.system_code =
        CodeOf("system", application.system, SystemTypeName, kSystemCount, map.LineOfKey("system"));
    application.data_type = map.Text("data_type");
    application.data_code = CodeOf("data type", application.data_type, DataTypeName, kDataTypeCount,
                                   map.LineOfKey("data_type"));
    application.name = map.OptionalText("application");
    application.database = map.Text("database");
    application.scan_main_file = map.Flag("scan_main_file");
    map.OptionalText("note");
    for (const YAML::Node& gap : map.OptionalList("not_covered")) {
      application.not_covered.push_back(ParseNotCovered(gap));
    }
    for (const YAML::Node& table : map.List("tables")) {
      application.tables.push_back(ParseTable(table));
    }
    if (application.tables.empty() && application.not_covered.empty()) {
      diagnostics_.Error(file_, map.LineOfKey("tables"),
                         "a file without tables has to say in not_covered why");
    }
    CheckPath(application, map);
    return application;
  }

 private:
  using NameOfCode = std::string (*)(int32_t);

  int32_t CodeOf(const std::string& what, const std::string& name, NameOfCode name_of,
                 int32_t count, int line) {
    if (name.empty()) return 0;  // reported already
    std::string known;
    for (int32_t code = 0; code < count; ++code) {
      if (name_of(code) == name) return code;
      known += (code == 0 ? "" : ", ") + name_of(code);
    }
    diagnostics_.Error(file_, line, "unknown " + what + " '" + name + "'; known are " + known);
    return 0;
  }

  // The place of a file says what it holds. A copy whose head was forgotten would otherwise add its
  // rows to the application it was copied from.
  void CheckPath(const Application& application, const MapReader& map) {
    const std::filesystem::path path = std::filesystem::absolute(file_);
    if (!application.system.empty() && path.parent_path().filename() != application.system) {
      diagnostics_.Error(file_, map.LineOfKey("system"),
                         "system '" + application.system + "' but the folder is '" +
                             path.parent_path().filename().string() + "'");
    }
    if (!application.data_type.empty() && path.stem() != application.data_type) {
      diagnostics_.Error(file_, map.LineOfKey("data_type"),
                         "data type '" + application.data_type + "' but the file is '" +
                             path.filename().string() + "'");
    }
  }

  NotCovered ParseNotCovered(const YAML::Node& node) {
    MapReader map(node, "a not_covered entry", {"what", "why"}, file_, diagnostics_);
    return {map.Text("what"), map.Text("why")};
  }

  Table ParseTable(const YAML::Node& node) {
    MapReader map(node, "a table",
                  {"name", "database", "note", "limits", "scan", "layouts", "results", "features"},
                  file_, diagnostics_);
    Table table;
    table.line = map.line();
    table.name = map.Text("name");
    table.database = map.OptionalText("database");
    table.limits = map.OptionalText("limits");
    map.OptionalText("note");
    if (const YAML::Node scan = map.Map("scan"); scan.IsDefined()) table.scan = ParseScan(scan);
    for (const YAML::Node& layout : map.List("layouts")) {
      table.layouts.push_back(ParseLayout(layout));
    }
    for (const YAML::Node& column : map.List("results")) {
      table.results.push_back(ParseResult(column));
    }
    for (const YAML::Node& feature : map.OptionalList("features")) {
      table.features.push_back(ParseFeature(feature));
    }
    return table;
  }

  ScanFlags ParseScan(const YAML::Node& node) {
    MapReader map(
        node, "scan",
        {"small_table", "virtual", "deleted", "flexible_cnt", "guess_row_id", "order_by_rowid"},
        file_, diagnostics_);
    ScanFlags scan;
    scan.small_table = map.Flag("small_table");
    scan.virtual_table = map.OptionalFlag("virtual");
    scan.deleted = map.Flag("deleted");
    scan.flexible_cnt = map.SmallNumber("flexible_cnt");
    scan.flexible_cnt_line = map.LineOfKey("flexible_cnt");
    scan.guess_row_id = map.Flag("guess_row_id");
    scan.guess_row_id_line = map.LineOfKey("guess_row_id");
    scan.order_by_rowid = map.Flag("order_by_rowid");
    return scan;
  }

  Layout ParseLayout(const YAML::Node& node) {
    MapReader map(node, "a layout",
                  {"from_version", "live_only", "unreadable", "note", "despite", "sql"}, file_,
                  diagnostics_);
    Layout layout;
    layout.line = map.line();
    layout.from_version = map.SmallNumber("from_version");
    layout.live_only = map.OptionalFlag("live_only");
    layout.unreadable = map.OptionalFlag("unreadable");
    layout.note = map.OptionalText("note");
    ParseDespite(map);
    layout.sql = map.Text("sql");
    if (layout.unreadable && !layout.live_only) {
      diagnostics_.Error(file_, map.LineOfKey("unreadable"),
                         "an unreadable layout can only be live_only");
    }
    return layout;
  }

  void ParseDespite(MapReader& map) {
    if (!map.OptionalText("despite").empty()) {
      diagnostics_.Accept(file_, map.line(), map.LineOfKey("despite"));
    }
  }

  ResultColumn ParseResult(const YAML::Node& node) {
    MapReader map(node, "a result column",
                  {"column", "type", "kind", "unique", "row_id", "note", "despite"}, file_,
                  diagnostics_);
    ResultColumn column;
    column.line = map.line();
    column.column = map.Text("column");
    // The result table is created with this word, whose affinity SQLite applies to each insert.
    if (map.Word("type", {"INTEGER", "REAL", "TEXT", "BLOB"}) >= 0) column.type = map.Text("type");
    column.kind = map.Word("kind", {"integer", "real", "text", "blob"});
    column.unique = map.OptionalFlag("unique");
    column.row_id = map.OptionalFlag("row_id");
    map.OptionalText("note");
    ParseDespite(map);
    return column;
  }

  Feature ParseFeature(const YAML::Node& node) {
    MapReader map(node, "a feature",
                  {"column", "kind", "or_kind", "not_null", "min", "max", "bytes", "not_bytes",
                   "why", "despite"},
                  file_, diagnostics_);
    Feature feature;
    feature.line = map.line();
    feature.column = map.Text("column");
    feature.kind = map.Word("kind", {"integer", "real", "text", "blob"});
    if (map.Has("or_kind")) {
      feature.or_kind = map.Word("or_kind", {"integer", "real", "text", "blob"});
    }
    feature.not_null = map.OptionalFlag("not_null");
    // Both limits always hold: one left out would read as 0 and not as "no limit".
    feature.min = map.Number("min");
    feature.max = map.Number("max");
    feature.bytes = map.OptionalText("bytes");
    feature.bytes_line = map.LineOfKey("bytes");
    feature.not_bytes = map.OptionalText("not_bytes");
    feature.not_bytes_line = map.LineOfKey("not_bytes");
    map.Text("why");
    ParseDespite(map);
    return feature;
  }

  std::string file_;
  Diagnostics& diagnostics_;
};

}  // namespace

std::optional<Application> ParseSource(const std::string& file, Diagnostics& diagnostics) {
  try {
    return SourceParser(file, diagnostics).Parse(YAML::LoadFile(file));
  } catch (const YAML::BadFile&) {
    diagnostics.Error(file, 1, "the file cannot be read");
  } catch (const YAML::Exception& fault) {
    diagnostics.Error(file, fault.mark.line + 1, "this is no YAML: " + fault.msg);
  }
  return std::nullopt;
}

}  // namespace vexaconfigc
