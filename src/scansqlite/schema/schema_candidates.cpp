#include "scansqlite/schema/schema_candidates.h"

#include <algorithm>
#include <utility>

#include "common/sqlitecommon/schema_query.h"

namespace {

// The real table carries a number behind this name.
constexpr const char* kNumberedTablePrefix = "fts_message_table_";
constexpr int kMaxNumberedNames = 64;

// Layouts of fewer columns are never merged.
constexpr size_t kWideTableColumns = 20;

// Each round appends its number to the name of the round before: ..._0, ..._01, ..._012.
std::string GetNumberedTableSql(sqlite3* connection, std::string name) {
  for (int number = 0; number < kMaxNumberedNames; ++number) {
    name += std::to_string(number);
    std::string sql = GetTableSql(connection, name);
    if (!sql.empty()) return sql;
  }
  return {};
}

bool IsPrefixOf(const SchemaCandidate& narrow, const SchemaCandidate& wide) {
  return std::equal(narrow.columns.begin(), narrow.columns.end(), wide.columns.begin(),
                    [](const SqlColumnInfo& a, const SqlColumnInfo& b) {
                      return a.name == b.name && a.type_code == b.type_code;
                    });
}

bool HasWidth(const std::vector<SchemaCandidate>& candidates, size_t width) {
  return std::any_of(candidates.begin(), candidates.end(),
                     [width](const SchemaCandidate& held) { return held.columns.size() == width; });
}

}  // namespace

bool LoadLiveSchema(const SqliteConnection& connection, const std::string& table_name,
                    TableSchemaInfo& table) {
  table.table_name = table_name;
  const std::string sql = table_name == kNumberedTablePrefix
                              ? GetNumberedTableSql(connection.handle(), table_name)
                              : GetTableSql(connection.handle(), table_name);
  if (sql.empty()) return false;
  SchemaCandidate candidate;
  candidate.from_live_db = true;
  candidate.columns = ParseCreateSql(table_name, sql);
  table.candidates.push_back(std::move(candidate));
  return true;
}

void MergeSchemaTexts(const std::vector<std::string>& texts, TableSchemaInfo& table) {
  std::vector<SchemaCandidate>& candidates = table.candidates;
  size_t fewest = 0;
  size_t most = 0;
  for (const std::string& text : texts) {
    if (text.empty()) continue;
    SchemaCandidate candidate{false, ParseCreateSql(table.table_name, text)};
    const size_t width = candidate.columns.size();
    if (HasWidth(candidates, width)) continue;
    candidates.push_back(std::move(candidate));
    if (candidates[fewest].columns.size() > width) fewest = candidates.size() - 1;
    if (candidates[most].columns.size() < width) most = candidates.size() - 1;
  }
  if (fewest == most || candidates[fewest].columns.size() < kWideTableColumns) return;
  if (!IsPrefixOf(candidates[fewest], candidates[most])) return;
  const auto difference = static_cast<int64_t>(candidates[most].columns.size()) -
                          static_cast<int64_t>(candidates[fewest].columns.size());
  if (difference >= table.flexible_cnt) return;
  SchemaCandidate widest = std::move(candidates[most]);
  candidates.clear();
  candidates.push_back(std::move(widest));
}
