#include "recovery/scan_runner.h"

#include <json/json.h>
#include <vexasqlitesdk.h>

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>

#include "recovery/database.h"

namespace recovery {
namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 12> kDataTypes = {
    "contact",   "sms",      "callhistory", "note",   "whatsapp",     "safari",
    "safariHis", "calendar", "reminder",    "wechat", "wechatMoment", "kakaotalk"};

int DataTypeCode(const std::string& name) {
  return static_cast<int>(std::find(kDataTypes.begin(), kDataTypes.end(), name) -
                          kDataTypes.begin());
}

ResultTable ReadTable(Database& db, const std::string& name) {
  ResultTable table;
  Statement statement = db.Prepare("SELECT * FROM " + Quoted(name));
  for (int i = 0; i < statement.columns(); ++i) table.columns.push_back(statement.ColumnName(i));
  while (statement.Step()) {
    Row& row = table.rows.emplace_back();
    for (int i = 0; i < statement.columns(); ++i) row.push_back(statement.Column(i));
  }
  return table;
}

void ReadResult(const std::string& path, ScanResult& result) {
  if (!fs::exists(path)) {
    result.failure += " no result was made";
    return;
  }
  Database db(path);
  if (db.One("PRAGMA integrity_check") != Value{std::string("ok")}) {
    result.failure += " the result is damaged";
  }
  for (const Row& row : db.Rows("SELECT name FROM sqlite_master WHERE type = 'table'")) {
    const auto& name = std::get<std::string>(row[0]);
    result.tables[name] = ReadTable(db, name);
  }
}

}  // namespace

ScanRunner::ScanRunner(const std::string& config_path, std::string folder)
    : folder_(std::move(folder)) {
  fs::remove_all(folder_);
  fs::create_directories(ConfigFolder());
  fs::copy_file(config_path, ConfigPath());
  InitSqliteSDK((folder_ + "/log").c_str(), (ConfigFolder()).c_str());
}

ScanRunner::~ScanRunner() {
  UninitSqliteSDK();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

ScanResult ScanRunner::Scan(const std::string& system, const std::string& data_type,
                            int system_version, const std::string& source_path,
                            const std::string& result_path) {
  const std::string temp = folder_ + "/temp";
  fs::remove_all(temp);
  fs::create_directories(temp);
  Json::Value parameters;
  parameters["system_type"] = system == "ios" ? 1 : 0;
  parameters["data_type"] = DataTypeCode(data_type);
  parameters["system_version"] = system_version;
  parameters["scan_range_type"] = 0;
  parameters["source_db_path"] = source_path;
  parameters["dest_db_path"] = result_path;
  parameters["temp_folder"] = temp;
  const std::string json = Json::writeString(Json::StreamWriterBuilder(), parameters);
  ScanResult result;
  int context = 0;
  try {
    const int code = ::Scan(json.data(), static_cast<int>(json.size()), &context);
    if (code != 0) result.failure = "the scan returned " + std::to_string(code);
  } catch (const std::exception& fault) {
    result.failure = std::string("the scan threw: ") + fault.what();
  }
  try {
    ReadResult(result_path, result);
  } catch (const DatabaseError& fault) {
    result.failure += std::string(" the result can't be read: ") + fault.what();
  }
  return result;
}

RowIdColumns ScanRunner::RowIds(const std::string& system, const std::string& data_type) const {
  Database db(ConfigPath());
  RowIdColumns columns;
  for (const Row& row :
       db.Rows("SELECT table_name, field_name FROM result_field_info WHERE is_row_id_field = 1"
               " AND system_type = " +
               SqlText(system) + " AND data_type = " + SqlText(data_type))) {
    columns[std::get<std::string>(row[0])] = std::get<std::string>(row[1]);
  }
  return columns;
}

bool ScanRunner::Covers(const std::string& system, const std::string& data_type,
                        const std::string& table) const {
  Database db(ConfigPath());
  return db.Number("SELECT count(*) FROM scan_table_info WHERE system_type = " + SqlText(system) +
                   " AND data_type = " + SqlText(data_type) +
                   (table.empty() ? "" : " AND table_name = " + SqlText(table))) > 0;
}

}  // namespace recovery
