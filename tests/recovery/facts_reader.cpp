#include "recovery/facts_reader.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <string_view>

#include "recovery/layout_columns.h"
#include "recovery/recipe.h"

namespace recovery {
namespace {

// Reads nodes of one file and names its lines in faults.
class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path) {}

  Facts Read();

 private:
  [[noreturn]] void Fail(const YAML::Node& node, const std::string& what) const {
    const int line = node.IsDefined() ? node.Mark().line + 1 : 1;
    throw FactsError(path_ + ":" + std::to_string(line) + ": " + what);
  }

  void CheckKeys(const YAML::Node& map, std::initializer_list<std::string_view> known) const;
  std::string Text(const YAML::Node& map, const char* key) const;
  std::string Text(const YAML::Node& map, const char* key, const std::string& otherwise) const;
  std::string Choice(const YAML::Node& map, const char* key,
                     std::initializer_list<std::string_view> known) const;
  const YAML::Node List(const YAML::Node& map, const char* key) const;
  template <typename T>
  T As(const YAML::Node& node, const char* what) const;

  Recipe ReadRecipe(const YAML::Node& node) const;
  DatabaseFacts ReadDatabase(const YAML::Node& node) const;
  TableFacts ReadTable(const YAML::Node& node) const;
  Layout ReadLayout(const YAML::Node& node, const std::string& table) const;
  void ReadValues(const YAML::Node& node, TableFacts& table) const;
  void CheckColumns(const YAML::Node& node, const TableFacts& table) const;

  std::string path_;
};

void Reader::CheckKeys(const YAML::Node& map, std::initializer_list<std::string_view> known) const {
  if (!map.IsMap()) Fail(map, "a map is expected here");
  std::set<std::string> seen;
  for (const auto& entry : map) {
    const auto key = entry.first.as<std::string>();
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      Fail(entry.first, "unknown key '" + key + "'");
    }
    if (!seen.insert(key).second) Fail(entry.first, "the key '" + key + "' stands here twice");
  }
}

template <typename T>
T Reader::As(const YAML::Node& node, const char* what) const {
  try {
    return node.as<T>();
  } catch (const YAML::Exception&) {
    Fail(node, std::string(what) + " has a value of the wrong kind");
  }
}

std::string Reader::Text(const YAML::Node& map, const char* key) const {
  if (!map[key]) Fail(map, std::string("the key '") + key + "' is missing");
  return As<std::string>(map[key], key);
}

std::string Reader::Text(const YAML::Node& map, const char* key,
                         const std::string& otherwise) const {
  return map[key] ? As<std::string>(map[key], key) : otherwise;
}

std::string Reader::Choice(const YAML::Node& map, const char* key,
                           std::initializer_list<std::string_view> known) const {
  const std::string text = Text(map, key, std::string(*known.begin()));
  if (std::find(known.begin(), known.end(), text) == known.end()) {
    Fail(map[key], "'" + text + "' is no value of '" + key + "'");
  }
  return text;
}

const YAML::Node Reader::List(const YAML::Node& map, const char* key) const {
  const YAML::Node list = map[key];
  if (!list || !list.IsSequence() || list.size() == 0) {
    Fail(map, std::string("a list '") + key + "' is expected here");
  }
  return list;
}

Recipe Reader::ReadRecipe(const YAML::Node& node) const {
  try {
    return ParseRecipe(As<std::string>(node, "a recipe"));
  } catch (const std::invalid_argument& fault) {
    Fail(node, fault.what());
  }
}

Layout Reader::ReadLayout(const YAML::Node& node, const std::string& table) const {
  CheckKeys(node, {"version", "label", "sql"});
  Layout layout;
  layout.sql = Text(node, "sql");
  layout.label = Text(node, "label", "");
  layout.version = node["version"] ? As<int>(node["version"], "version") : 0;
  try {
    ReadColumns(table, layout);
  } catch (const std::exception& fault) {
    Fail(node["sql"], fault.what());
  }
  return layout;
}

void Reader::ReadValues(const YAML::Node& node, TableFacts& table) const {
  if (!node.IsMap()) Fail(node, "a map of recipes is expected here");
  for (const auto& entry : node) {
    const auto column = entry.first.as<std::string>();
    const Recipe recipe = ReadRecipe(entry.second);
    if (column == "others") {
      table.others = recipe;
    } else if (!table.values.emplace(column, recipe).second) {
      Fail(entry.first, "the column '" + column + "' stands here twice");
    }
  }
}

// Every column needs a recipe, and every recipe a column.
void Reader::CheckColumns(const YAML::Node& node, const TableFacts& table) const {
  std::set<std::string> names;
  for (const Layout& layout : table.layouts) {
    for (size_t i = 0; i < layout.columns.size(); ++i) {
      const std::string& name = layout.columns[i].name;
      names.insert(name);
      if (layout.alias != i && !table.others && !table.values.contains(name)) {
        Fail(node["values"] ? node["values"] : node, "no recipe for the column '" + name + "'");
      }
    }
  }
  const auto check = [&](const std::string& name, const YAML::Node& at, const char* what) {
    if (!name.empty() && !names.contains(name)) {
      Fail(at, std::string(what) + ": no layout has a column '" + name + "'");
    }
  };
  for (const char* part : {"values", "update"}) {
    if (!node[part]) continue;
    for (const auto& entry : node[part]) {
      const auto name = entry.first.as<std::string>();
      if (name == "others" && std::string_view(part) == "values") continue;
      check(name, entry.first, part);
      check(ColumnOfRecipe(ReadRecipe(entry.second)), entry.second, "recipe");
    }
  }
  check(table.conversation, node["conversation"], "conversation");
  check(table.age, node["age"], "age");
}

TableFacts Reader::ReadTable(const YAML::Node& node) const {
  CheckKeys(node, {"name", "share", "conversation", "age", "update", "layouts", "values"});
  TableFacts table;
  table.name = Text(node, "name");
  table.share = node["share"] ? As<double>(node["share"], "share") : 1.0;
  if (table.share <= 0) Fail(node["share"], "a share is above 0");
  table.conversation = Text(node, "conversation", "");
  table.age = Text(node, "age", "");
  for (const YAML::Node& layout : List(node, "layouts")) {
    table.layouts.push_back(ReadLayout(layout, table.name));
  }
  if (node["values"]) ReadValues(node["values"], table);
  if (node["update"]) {
    if (!node["update"].IsMap()) Fail(node["update"], "a map of recipes is expected here");
    for (const auto& entry : node["update"]) {
      table.update.emplace(entry.first.as<std::string>(), ReadRecipe(entry.second));
    }
  }
  CheckColumns(node, table);
  return table;
}

DatabaseFacts Reader::ReadDatabase(const YAML::Node& node) const {
  CheckKeys(node, {"file", "secure_delete", "auto_vacuum", "wal", "encoding", "tables"});
  DatabaseFacts database;
  database.file = Text(node, "file");
  database.secure_delete = Choice(node, "secure_delete", {"off", "on", "fast"});
  database.auto_vacuum = Choice(node, "auto_vacuum", {"none", "full", "incremental"});
  database.wal = node["wal"] && As<bool>(node["wal"], "wal");
  database.encoding = Choice(node, "encoding", {"UTF-8", "UTF-16le", "UTF-16be"});
  std::set<std::string> names;
  for (const YAML::Node& table : List(node, "tables")) {
    database.tables.push_back(ReadTable(table));
    if (!names.insert(database.tables.back().name).second) {
      Fail(table, "the table '" + database.tables.back().name + "' stands here twice");
    }
  }
  return database;
}

Facts Reader::Read() {
  YAML::Node root;
  try {
    root = YAML::LoadFile(path_);
  } catch (const YAML::BadFile&) {
    throw FactsError(path_ + ":1: the file can't be read");
  } catch (const YAML::Exception& fault) {
    throw FactsError(path_ + ":" + std::to_string(fault.mark.line + 1) + ": " + fault.msg);
  }
  CheckKeys(root, {"system", "data_type", "databases"});
  Facts facts;
  facts.system = Text(root, "system");
  facts.data_type = Text(root, "data_type");
  if (facts.system != "android" && facts.system != "ios") {
    Fail(root["system"], "'" + facts.system + "' is no system");
  }
  for (const YAML::Node& database : List(root, "databases")) {
    facts.databases.push_back(ReadDatabase(database));
  }
  return facts;
}

}  // namespace

Facts ReadFacts(const std::string& path) {
  try {
    return Reader(path).Read();
  } catch (const YAML::Exception& fault) {
    throw FactsError(path + ":" + std::to_string(fault.mark.line + 1) + ": " + fault.msg);
  }
}

std::vector<std::string> FactsFiles(const std::string& folder) {
  std::vector<std::string> files;
  if (!std::filesystem::is_directory(folder)) return files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && entry.path().extension() == ".yaml") {
      files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace recovery
