#include "support/config_maker.h"

#include <utility>

namespace {

constexpr const char* kTables =
    "CREATE TABLE scan_table_info(system_type TEXT, data_type TEXT, table_name TEXT,"
    " is_small_table INT, is_virtual_table INT, scan_type INT, flexible_cnt INT,"
    " need_guess_row_id INT, need_order_by_rowid INT);"
    "CREATE TABLE scan_type_info(system_type TEXT, data_type TEXT, is_scan_database INT);"
    "CREATE TABLE create_table_sql(system_type TEXT, data_type TEXT, system_version INT,"
    " table_name TEXT, sql TEXT);"
    "CREATE TABLE field_features(system_type INT, data_type TEXT, table_name TEXT,"
    " field_name TEXT, is_not_null INT, field_type INT, min INT, max INT, item_range TEXT,"
    " item_not_exist_value TEXT, field_type_candidate INT);"
    "CREATE TABLE result_field_info(system_type TEXT, data_type TEXT, table_name TEXT,"
    " field_name TEXT, field_type_text TEXT, field_type INT, is_unique_field INT,"
    " is_row_id_field INT);";

std::string Next(int64_t number) { return "," + std::to_string(number); }

std::string Next(const std::string& text) { return "," + SqlText(text); }

}  // namespace

ConfigMaker::ConfigMaker(const std::string& path, ConfigOwner owner)
    : db_(path), owner_(std::move(owner)) {
  db_.Run(kTables);
}

std::string ConfigMaker::OwnerTexts() const { return SqlText(owner_.system) + Next(owner_.data); }

void ConfigMaker::AddTable(const std::string& table, const ConfigTable& flags) {
  db_.Run("INSERT INTO scan_table_info VALUES(" + OwnerTexts() + Next(table) +
          Next(flags.is_small_table) + Next(flags.is_virtual_table) + Next(flags.scan_type) +
          Next(flags.flexible_cnt) + Next(flags.need_guess_row_id) +
          Next(flags.need_order_by_rowid) + ")");
}

void ConfigMaker::AddLayout(const std::string& table, const std::string& sql, int system_version) {
  db_.Run("INSERT INTO create_table_sql VALUES(" + OwnerTexts() + Next(system_version) +
          Next(table) + Next(sql) + ")");
}

void ConfigMaker::AddFeature(const std::string& table, const ConfigFeature& feature) {
  db_.Run("INSERT INTO field_features VALUES(" + std::to_string(owner_.system_code) +
          Next(owner_.data) + Next(table) + Next(feature.field) + Next(feature.is_not_null) +
          Next(feature.field_type) + Next(feature.min) + Next(feature.max) +
          Next(feature.item_range) + Next(feature.item_not_exist_value) +
          Next(feature.field_type_candidate) + ")");
}

void ConfigMaker::AddField(const std::string& table, const ConfigField& field) {
  db_.Run("INSERT INTO result_field_info VALUES(" + OwnerTexts() + Next(table) + Next(field.name) +
          Next(field.type_text) + Next(field.field_type) + Next(field.is_unique) +
          Next(field.is_row_id) + ")");
}

void ConfigMaker::ScanDatabase(int is_scan_database) {
  db_.Run("INSERT INTO scan_type_info VALUES(" + OwnerTexts() + Next(is_scan_database) + ")");
}
