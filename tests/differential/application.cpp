#include "differential/application.h"

#include <limits>

namespace differential {

namespace {

constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();

Kind RandomKind(Dice& dice) {
  return dice.Pick({Kind::kSmall, Kind::kInteger, Kind::kDate, Kind::kFlag, Kind::kReal,
                    Kind::kText, Kind::kPhone, Kind::kDirty, Kind::kLong, Kind::kBlob, Kind::kNull,
                    Kind::kAny});
}

std::string TypeFor(Dice& dice, Kind kind) {
  if (dice.Chance(15)) {
    return dice.Pick({"INTEGER", "TEXT", "BLOB", "REAL", "BOOL", "VARCHAR(20)", "LONG", "DATETIME",
                      "TIMESTAMP", "DOUBLE", "STRING", "UNSIGNED BIG INT", "INT"});
  }
  switch (kind) {
    case Kind::kReal:
      return dice.Pick({"REAL", "DOUBLE", "FLOAT"});
    case Kind::kText:
    case Kind::kPhone:
    case Kind::kDirty:
    case Kind::kLong:
      return dice.Pick({"TEXT", "VARCHAR", "text"});
    case Kind::kBlob:
      return "BLOB";
    case Kind::kFlag:
      return dice.Pick({"BOOL", "BOOLEAN", "INTEGER"});
    default:
      return dice.Pick({"INTEGER", "LONG", "INT"});
  }
}

int FieldTypeFor(Kind kind) {
  switch (kind) {
    case Kind::kReal:
      return 1;
    case Kind::kText:
    case Kind::kPhone:
    case Kind::kDirty:
    case Kind::kLong:
      return 2;
    case Kind::kBlob:
      return 3;
    default:
      return 0;
  }
}

ConfigFeature RandomFeature(Dice& dice, const AppColumn& column) {
  ConfigFeature feature;
  feature.field = column.name;
  feature.is_not_null = dice.Pick({0, 0, 1, 1, -1, 2});
  feature.field_type = dice.Chance(80) ? FieldTypeFor(column.kind) : dice.Pick({-1, 0, 1, 2, 3, 4});
  feature.field_type_candidate = dice.Chance(60) ? -1 : dice.Pick({0, 1, 2, 3, 0, 2, 7});
  switch (dice.Below(6)) {
    case 0:
      feature.min = dice.Between(0, 4);
      feature.max = dice.Between(3, 70);
      break;
    case 1:
      feature.min = kLowest;
      feature.max = kHighest;
      break;
    case 2:
      feature.min = dice.Pick<int64_t>({-200, -1, 100, 20000, 40000, 1 << 24});
      feature.max = feature.min + dice.Pick<int64_t>({0, 50, 70000, int64_t{1} << 40});
      break;
    case 3:
      feature.min = column.kind == Kind::kDate ? 1300000000000 : -100000000;
      feature.max = column.kind == Kind::kDate ? 1800000000000 : 100000000;
      break;
    default:
      feature.min = 0;
      feature.max = column.kind == Kind::kDate ? 1800000000000 : 100000;
      break;
  }
  if (dice.Chance(25)) {
    feature.item_range = dice.Pick({"'0'~'9','+'", "a~z,0x20,'0'~'9'", "0x20~0xF7", "0x00~0xFF"});
    if (dice.Chance(30)) feature.item_not_exist_value = dice.Pick({"e", "0x20", "'q'", "0x01"});
  }
  return feature;
}

ConfigField RandomField(Dice& dice, const AppColumn& column, bool odd) {
  ConfigField field;
  field.name = column.name;
  field.field_type = dice.Chance(80) ? FieldTypeFor(column.kind) : dice.Pick({0, 1, 2, 3});
  if (odd && dice.Chance(10)) field.field_type = dice.Pick({-1, 4});
  field.type_text = dice.Pick({"INTEGER", "TEXT", "REAL", "BLOB", "", "TEXT", "INTEGER"});
  if (odd && dice.Chance(15)) {
    field.type_text = dice.Pick(
        {"INTEGER NOT NULL", "TEXT COLLATE NOCASE", "TEXT UNIQUE", "INTEGER PRIMARY KEY",
         "VARCHAR(20)", "TEXT NOT NULL ON CONFLICT REPLACE", "TEXT UNIQUE ON CONFLICT REPLACE"});
  }
  field.is_row_id = column.kind == Kind::kKey || dice.Chance(5) ? 1 : 0;
  if (odd && dice.Chance(5)) field.is_row_id = 2;
  return field;
}

// The columns without some of them, the first one stays.
std::vector<AppColumn> FewerColumns(Dice& dice, const std::vector<AppColumn>& columns) {
  if (dice.Chance(50)) {
    return {columns.begin(),
            columns.begin() + static_cast<std::ptrdiff_t>(1 + dice.Below(columns.size()))};
  }
  std::vector<AppColumn> fewer;
  for (const AppColumn& column : columns) {
    if (fewer.empty() || dice.Chance(75)) fewer.push_back(column);
  }
  return fewer;
}

std::vector<AppColumn> RandomColumns(Dice& dice) {
  const size_t width = dice.Chance(70)   ? 1 + dice.Below(9)
                       : dice.Chance(80) ? 10 + dice.Below(18)
                                         : 28 + dice.Below(120);
  std::vector<AppColumn> columns;
  for (size_t i = 0; i < width; ++i) {
    const Kind kind = RandomKind(dice);
    columns.push_back({"c" + std::to_string(i), TypeFor(dice, kind), kind});
  }
  if (dice.Chance(50)) columns[0] = {"_id", "INTEGER PRIMARY KEY", Kind::kKey};
  return columns;
}

}  // namespace

std::string CreateText(const std::string& table, const std::vector<AppColumn>& columns) {
  std::string text;
  for (const AppColumn& column : columns) {
    text += (text.empty() ? "CREATE TABLE " + table + "(" : ", ") + column.name + " " + column.type;
  }
  return text + ")";
}

void WriteConfig(const Application& application, const std::string& path) {
  ConfigMaker config(path, application.owner);
  config.db().Run("BEGIN");
  for (const AppTable& table : application.tables) {
    config.AddTable(table.name, table.flags);
    for (const auto& columns : table.older) {
      config.AddLayout(table.name, CreateText(table.name, columns));
    }
    for (const ConfigFeature& feature : table.features) config.AddFeature(table.name, feature);
    for (const ConfigField& field : table.fields) config.AddField(table.name, field);
  }
  config.ScanDatabase(application.is_scan_database);
  config.db().Run("COMMIT");
}

AppTable MessagesTable(const std::string& name, size_t width) {
  AppTable table;
  table.name = name;
  table.columns = {
      {"_id", "INTEGER PRIMARY KEY", Kind::kKey}, {"thread_id", "INTEGER", Kind::kSmall},
      {"address", "TEXT", Kind::kPhone},          {"person", "INTEGER", Kind::kNull},
      {"date", "INTEGER", Kind::kDate},           {"date_sent", "INTEGER", Kind::kDate},
      {"protocol", "INTEGER", Kind::kFlag},       {"read", "INTEGER", Kind::kFlag},
      {"status", "INTEGER", Kind::kSmall},        {"type", "INTEGER", Kind::kSmall},
      {"subject", "TEXT", Kind::kNull},           {"body", "TEXT", Kind::kLong},
      {"service_center", "TEXT", Kind::kPhone}};
  for (size_t i = table.columns.size(); i < width; ++i) {
    table.columns.push_back({"extra" + std::to_string(i), "INTEGER", Kind::kFlag});
  }
  for (const size_t older : {size_t{15}, size_t{17}}) {
    table.older.emplace_back(table.columns.begin(),
                             table.columns.begin() + static_cast<std::ptrdiff_t>(older));
  }
  table.features = {{"thread_id", 0, 0, 0, 1000, "", "", -1},
                    {"address", 0, 2, 3, 30, "'0'~'9','+'", "", -1},
                    {"date", 1, 0, 1300000000000, 1800000000000, "", "", -1},
                    {"read", 0, 0, 0, 1, "", "", -1},
                    {"body", 0, 2, 0, 100000, "", "", -1}};
  table.fields = {{"_id", "INTEGER", 0, 0, 1},  {"thread_id", "INTEGER", 0, 0, 0},
                  {"address", "TEXT", 2, 1, 0}, {"date", "INTEGER", 0, 1, 0},
                  {"body", "TEXT", 2, 1, 0},    {"read", "INTEGER", 0, 0, 0},
                  {"subject", "TEXT", 2, 0, 0}};
  return table;
}

AppTable RandomTable(Dice& dice, const std::string& name) {
  AppTable table;
  table.name = name;
  table.columns = RandomColumns(dice);
  for (size_t i = dice.Below(4); i > 0; --i) {
    table.older.push_back(FewerColumns(dice, table.columns));
  }
  table.flags.is_small_table = dice.Chance(25) ? 1 : 0;
  table.flags.scan_type = dice.Chance(4) ? 1 : 0;
  table.flags.flexible_cnt = dice.Pick({0, 0, 0, 1, 3, 3, 35, -1});
  table.flags.need_guess_row_id = dice.Chance(40) ? 1 : 0;
  table.flags.need_order_by_rowid = dice.Chance(40) ? 1 : 0;
  const int featured = dice.Pick({0, 20, 60, 90});
  const int unique = dice.Pick({0, 20, 50, 100});
  const bool odd = dice.Chance(40);
  for (const AppColumn& column : table.columns) {
    if (dice.Chance(featured) && (column.kind != Kind::kKey || dice.Chance(5))) {
      table.features.push_back(RandomFeature(dice, column));
    }
    if (!dice.Chance(85)) continue;
    table.fields.push_back(RandomField(dice, column, odd));
    table.fields.back().is_unique = dice.Chance(unique) ? 1 : 0;
  }
  return table;
}

Application RandomApplication(Dice& dice, size_t tables) {
  Application application;
  for (size_t i = 0; i < tables; ++i) {
    application.tables.push_back(RandomTable(dice, "t" + std::to_string(i)));
  }
  application.is_scan_database = dice.Chance(95) ? 1 : 0;
  return application;
}

}  // namespace differential
