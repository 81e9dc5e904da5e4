#pragma once

#include <string>
#include <vector>

#include "differential/values.h"
#include "support/config_maker.h"

namespace differential {

struct AppColumn {
  std::string name;
  std::string type;
  Kind kind = Kind::kAny;
};

// One table of an application and what the configuration says of it.
struct AppTable {
  std::string name;
  std::vector<AppColumn> columns;             // as the database holds them now
  std::vector<std::vector<AppColumn>> older;  // earlier layouts, which the configuration knows
  ConfigTable flags;
  std::vector<ConfigFeature> features;
  std::vector<ConfigField> fields;
};

struct Application {
  std::vector<AppTable> tables;
  int is_scan_database = 1;
  ConfigOwner owner;  // android, sms
};

// The CREATE text of a table with these columns.
std::string CreateText(const std::string& table, const std::vector<AppColumn>& columns);

void WriteConfig(const Application& application, const std::string& path);

// A messages table as applications have it: alias, dates that must be there, older layouts of 15
// and 17 columns. `width` from 18.
AppTable MessagesTable(const std::string& name = "sms", size_t width = 20);

// A table, flags and checks without much sense, so that everything meets.
AppTable RandomTable(Dice& dice, const std::string& name);

Application RandomApplication(Dice& dice, size_t tables);

}  // namespace differential
