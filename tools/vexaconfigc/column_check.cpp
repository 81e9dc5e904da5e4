#include "column_check.h"

#include <algorithm>
#include <map>

#include "byte_set_check.h"
#include "layout_check.h"
#include "memory_database.h"
#include "scansqlite/carving/serial_type.h"

namespace vexaconfigc {

namespace {

bool AnyLayoutHolds(const Table& table, const std::string& column) {
  return std::any_of(table.layouts.begin(), table.layouts.end(),
                     [&column](const Layout& layout) { return PositionOf(layout, column) >= 0; });
}

// True when some layout has the column as its row id alias.
bool IsAlias(const Table& table, const std::string& column) {
  return std::any_of(table.layouts.begin(), table.layouts.end(), [&column](const Layout& layout) {
    return !layout.columns.empty() && layout.columns.front().is_primary_key &&
           layout.columns.front().name == column;
  });
}

bool IsBytesKind(int kind) { return kind == kKindText || kind == kKindBlob; }

int32_t StorageClassOf(int kind) {
  switch (kind) {
    case kKindReal:
      return kClassReal;
    case kKindText:
      return kClassText;
    case kKindBlob:
      return kClassBlob;
    default:
      return kClassInteger;
  }
}

// The declared type of a column shuts kinds of values out before a feature is asked. Only or_kind
// can let one in.
bool AnyValuePasses(const SqlColumnInfo& column, const Feature& feature) {
  const auto passes = [&](int kind) {
    return kind != kKindNone &&
           IsSerialAllowed(column.type_code, StorageClassOf(kind), feature.or_kind);
  };
  return passes(feature.kind) || passes(feature.or_kind);
}

// The library makes the result table and its index with these statements and looks at no result: a
// name that SQLite does not take unquoted would give no table, without a word.
std::string ResultTableFault(const Table& table) {
  std::string columns;
  std::string key;
  for (const ResultColumn& result : table.results) {
    columns += (columns.empty() ? "" : ",") + result.column + " " + result.type;
    if (result.unique) key += (key.empty() ? "" : ",") + result.column;
  }
  MemoryDatabase database;
  std::string fault = database.Run("create table " + table.name + "(" + columns + ")");
  if (!fault.empty()) return fault;
  return database.Run("CREATE UNIQUE INDEX " + table.name + "_unique_key_index on " + table.name +
                      "(" + key + ")");
}

}  // namespace

void CheckResults(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  std::map<std::string, int> lines;
  const ResultColumn* row_id = nullptr;
  bool sound = true;
  const auto error = [&](int line, const std::string& words) {
    diagnostics.Error(file, line, words);
    sound = false;
  };
  for (const ResultColumn& result : table.results) {
    const std::string name = "result column '" + result.column + "'";
    if (result.column.empty()) {
      sound = false;
      continue;
    }
    if (const auto [first, is_new] = lines.emplace(result.column, result.line); !is_new) {
      error(result.line, name + " stands twice, first on line " + std::to_string(first->second));
    }
    if (!AnyLayoutHolds(table, result.column)) error(result.line, "no layout holds " + name);
    if (result.row_id) {
      if (row_id != nullptr) {
        error(result.line, "more than one row id column: '" + row_id->column + "' on line " +
                               std::to_string(row_id->line) + " is one already");
      } else if (result.kind != kKindInteger) {
        error(result.line, name + " takes the row id and must be of kind integer");
      }
      row_id = &result;
    } else if (IsAlias(table, result.column)) {
      error(result.line, name +
                             " is NULL in every record, since the row id stands for it: mark "
                             "it row_id: true");
    }
  }
  const bool has_unique = std::any_of(table.results.begin(), table.results.end(),
                                      [](const ResultColumn& result) { return result.unique; });
  if (!has_unique) {
    error(table.line, "table '" + table.name + "' has no unique column, so that every live row " +
                          "would come back as a recovered one");
  }
  if (table.scan.guess_row_id && row_id == nullptr) {
    error(table.scan.line, "guess_row_id needs a result column with row_id: true");
  }
  if (!sound) return;
  if (const std::string fault = ResultTableFault(table); !fault.empty()) {
    error(table.line, "SQLite refuses the result table '" + table.name + "': " + fault);
  }
}

void CheckFeatures(const Table& table, const std::string& file, Diagnostics& diagnostics) {
  std::map<std::string, int> lines;
  for (const Feature& feature : table.features) {
    const std::string name = "feature on '" + feature.column + "'";
    const auto error = [&](const std::string& words, int line) {
      diagnostics.Error(file, line, words);
    };
    if (feature.column.empty()) continue;
    if (const auto [first, is_new] = lines.emplace(feature.column, feature.line); !is_new) {
      error("a second " + name + " has no effect; the first is on line " +
                std::to_string(first->second),
            feature.line);
    }
    if (!AnyLayoutHolds(table, feature.column)) {
      error("no layout holds the column of the " + name, feature.line);
    }
    if (IsAlias(table, feature.column)) {
      error("the " + name + " sees the number 0 in every record, since the row id stands for it",
            feature.line);
    }
    for (const Layout& layout : table.layouts) {
      const int position = PositionOf(layout, feature.column);
      if (position < 0 || feature.kind == kKindNone) continue;
      if (!AnyValuePasses(layout.columns[static_cast<size_t>(position)], feature)) {
        error(
            "the declared type of the column lets no value of this kind through (layout on line " +
                std::to_string(layout.line) + ")",
            feature.line);
        break;
      }
    }
    if (feature.min > feature.max) error("min lies above max", feature.line);
    // A blob named twice admits blobs, unchanged, in a column of another declared type.
    if (feature.kind == feature.or_kind && feature.kind != kKindBlob) {
      error("or_kind repeats kind", feature.line);
    }
    const bool has_bytes = IsBytesKind(feature.kind) || IsBytesKind(feature.or_kind);
    if (feature.min < 0 && (IsBytesKind(feature.kind))) {
      error("a length has no negative min", feature.line);
    }
    if (!feature.bytes.empty()) {
      if (!has_bytes) error("bytes act on text and blob only", feature.bytes_line);
      const std::string fault = ByteSetFault(feature.bytes);
      if (!fault.empty()) error(fault, feature.bytes_line);
    }
    if (!feature.not_bytes.empty()) {
      if (feature.bytes.empty())
        error("not_bytes has no effect without bytes", feature.not_bytes_line);
      const std::string fault = ByteSetFault(feature.not_bytes);
      if (!fault.empty()) error(fault, feature.not_bytes_line);
    }
  }
  if (table.scan.deleted && table.features.empty()) {
    diagnostics.Error(file, table.line,
                      "table '" + table.name +
                          "' is scanned for deleted records without any feature, so that noise "
                          "would be taken for records");
  }
}

}  // namespace vexaconfigc
