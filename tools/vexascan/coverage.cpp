#include "coverage.h"

#include <algorithm>
#include <utility>

#include "exit_code.h"
#include "scan_request.h"
#include "sqlite_db.h"

namespace vexascan {
namespace {

class CoverageReader {
 public:
  explicit CoverageReader(const std::filesystem::path& path)
      : database_(Database::OpenImmutable(path)) {}

  std::vector<CoveredApplication> Read() {
    // A configuration that was not made of sources has the library's own tables alone.
    has_details_ = database_.SingleInteger(
                       "SELECT count(*) = 2 FROM sqlite_master WHERE type = 'table'"
                       " AND name IN ('covered_table', 'not_covered')") != 0;
    std::vector<CoveredApplication> applications;
    for (const std::string_view system : kSystemNames) {
      for (const std::string_view data : kApplicationNames) {
        CoveredApplication application;
        application.system = system;
        application.data_type = data;
        ReadTables(application);
        if (has_details_) ReadDetails(application);
        if (!application.tables.empty() || !application.gaps.empty()) {
          applications.push_back(std::move(application));
        }
      }
    }
    return applications;
  }

 private:
  Statement About(const CoveredApplication& application, const std::string& sql) const {
    Statement statement =
        database_.Prepare(sql + " WHERE system_type = ?1 AND data_type = ?2 ORDER BY rowid");
    statement.Bind(1, application.system);
    statement.Bind(2, application.data_type);
    return statement;
  }

  static CoveredTable* Find(CoveredApplication& application, const std::string& name) {
    const auto found =
        std::find_if(application.tables.begin(), application.tables.end(),
                     [&name](const CoveredTable& table) { return table.name == name; });
    return found == application.tables.end() ? nullptr : &*found;
  }

  void ReadTables(CoveredApplication& application) {
    constexpr std::int64_t kExistingOnly = 1;
    Statement tables = About(application, "SELECT table_name, scan_type FROM scan_table_info");
    while (tables.Step()) {
      CoveredTable table;
      table.name = tables.Text(0);
      table.deleted = tables.Integer(1) != kExistingOnly;
      application.tables.push_back(std::move(table));
    }
    Statement layouts = About(application, "SELECT table_name FROM create_table_sql");
    while (layouts.Step()) {
      if (CoveredTable* table = Find(application, layouts.Text(0))) ++table->layouts;
    }
    Statement columns =
        About(application, "SELECT table_name, field_name, is_unique_field FROM result_field_info");
    while (columns.Step()) {
      CoveredTable* table = Find(application, columns.Text(0));
      if (table != nullptr && columns.Integer(2) != 0) table->key.push_back(columns.Text(1));
    }
    Statement main_file = About(application, "SELECT is_scan_database FROM scan_type_info");
    application.log_only = main_file.Step() && main_file.Integer(0) != 1;
  }

  static void AddDatabase(CoveredApplication& application, const std::string& name) {
    auto& names = application.databases;
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }

  void ReadDetails(CoveredApplication& application) {
    Statement tables = About(
        application, "SELECT table_name, database_file, limits, application FROM covered_table");
    while (tables.Step()) {
      CoveredTable* table = Find(application, tables.Text(0));
      if (table == nullptr) continue;
      table->database = tables.Text(1);
      table->limits = tables.Text(2);
      application.name = tables.Text(3);
      AddDatabase(application, table->database);
    }
    Statement gaps =
        About(application, "SELECT what, why, database_file, application FROM not_covered");
    while (gaps.Step()) {
      application.gaps.push_back({gaps.Text(0), gaps.Text(1)});
      application.name = gaps.Text(3);
      if (application.tables.empty()) AddDatabase(application, gaps.Text(2));
    }
  }

  Database database_;
  bool has_details_ = false;
};

}  // namespace

std::vector<CoveredApplication> ReadCoverage(const std::filesystem::path& config_database) {
  try {
    return CoverageReader(config_database).Read();
  } catch (const DatabaseError& error) {
    throw UsageError(config_database.string() + " is not a configuration database (" +
                     error.what() + ").");
  }
}

}  // namespace vexascan
