#pragma once

#include <cstdint>
#include <string>

#include "support/sqlite_maker.h"

// Flags of one table to scan, as the configuration stores them.
struct ConfigTable {
  int is_small_table = 0;
  int is_virtual_table = 0;
  int scan_type = 0;
  int flexible_cnt = 0;
  int need_guess_row_id = 0;
  int need_order_by_rowid = 0;
};

// Checks of one column. Field types: 0 integer, 1 real, 2 text, 3 blob, -1 none.
struct ConfigFeature {
  std::string field;
  int is_not_null = 0;
  int field_type = 0;
  int64_t min = 0;
  int64_t max = 0;
  std::string item_range;
  std::string item_not_exist_value;
  int field_type_candidate = -1;
};

// One column of a result table.
struct ConfigField {
  std::string name;
  std::string type_text;
  int field_type = 0;
  int is_unique = 0;
  int is_row_id = 0;
};

// Which application the rows of a configuration belong to.
struct ConfigOwner {
  std::string system = "android";
  std::string data = "sms";
  int system_code = 0;
};

// Writes a configuration database row by row, the five tables first.
class ConfigMaker {
 public:
  explicit ConfigMaker(const std::string& path, ConfigOwner owner = {});

  void AddTable(const std::string& table, const ConfigTable& flags = {});
  void AddLayout(const std::string& table, const std::string& sql, int system_version = 0);
  void AddFeature(const std::string& table, const ConfigFeature& feature);
  void AddField(const std::string& table, const ConfigField& field);
  void ScanDatabase(int is_scan_database);

  // For what the operations above cannot say.
  SqliteMaker& db() { return db_; }

 private:
  std::string OwnerTexts() const;

  SqliteMaker db_;
  ConfigOwner owner_;
};
