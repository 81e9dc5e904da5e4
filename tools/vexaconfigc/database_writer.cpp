#include "database_writer.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <variant>

#include "common/sqlitecommon/sqlite_connection.h"

namespace vexaconfigc {

namespace {

using Value = std::variant<int64_t, std::string>;

constexpr const char* kTables =
    "CREATE TABLE scan_table_info(system_type TEXT, data_type TEXT, table_name TEXT,"
    " is_small_table INTEGER, is_virtual_table INTEGER, scan_type INTEGER, flexible_cnt INTEGER,"
    " need_guess_row_id INTEGER, need_order_by_rowid INTEGER);"
    "CREATE TABLE scan_type_info(system_type TEXT, data_type TEXT, is_scan_database INTEGER);"
    "CREATE TABLE create_table_sql(system_type TEXT, data_type TEXT, system_version INTEGER,"
    " table_name TEXT, sql TEXT);"
    // The system is a number here, since the library binds its code and not its name.
    "CREATE TABLE field_features(system_type INTEGER, data_type TEXT, table_name TEXT,"
    " field_name TEXT, is_not_null INTEGER, field_type INTEGER, min INTEGER, max INTEGER,"
    " item_range TEXT, item_not_exist_value TEXT, field_type_candidate INTEGER);"
    "CREATE TABLE result_field_info(system_type TEXT, data_type TEXT, table_name TEXT,"
    " field_name TEXT, field_type_text TEXT, field_type INTEGER, is_unique_field INTEGER,"
    " is_row_id_field INTEGER);"
    // What people want to know about the rows above. The library does not read these two.
    "CREATE TABLE covered_table(system_type TEXT, data_type TEXT, application TEXT,"
    " database_file TEXT, table_name TEXT, limits TEXT);"
    "CREATE TABLE not_covered(system_type TEXT, data_type TEXT, application TEXT,"
    " database_file TEXT, what TEXT, why TEXT);";

// Keeps the table out of the deleted scans.
constexpr int64_t kScanTypeExistingOnly = 1;
constexpr int64_t kScanTypeAll = 0;

int64_t AsNumber(bool flag) { return flag ? 1 : 0; }

// A database under construction. Any failure throws, with SQLite's words.
class DatabaseFile {
 public:
  explicit DatabaseFile(const std::string& path) : connection_(path) {
    Check(connection_.Open(""));
    // No side files, and nothing in the file that depends on the run.
    Run("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; PRAGMA page_size=4096;"
        "PRAGMA encoding='UTF-8'; BEGIN;");
    Run(kTables);
  }

  void Insert(const std::string& table, const std::vector<Value>& values) {
    std::string sql = "INSERT INTO " + table + " VALUES(?";
    for (size_t i = 1; i < values.size(); ++i) sql += ",?";
    sqlite3_stmt* raw = nullptr;
    Check(sqlite3_prepare_v2(connection_.handle(), (sql + ")").c_str(), -1, &raw, nullptr));
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(raw, sqlite3_finalize);
    int index = 0;
    for (const Value& value : values) {
      ++index;
      if (const auto* number = std::get_if<int64_t>(&value)) {
        Check(sqlite3_bind_int64(raw, index, *number));
      } else {
        const std::string& text = std::get<std::string>(value);
        Check(sqlite3_bind_text(raw, index, text.data(), static_cast<int>(text.size()),
                                SQLITE_TRANSIENT));
      }
    }
    if (sqlite3_step(raw) != SQLITE_DONE) Check(SQLITE_ERROR);
  }

  void Commit() {
    Run("COMMIT");
    Check(connection_.Close());
  }

 private:
  void Run(const char* sql) {
    Check(sqlite3_exec(connection_.handle(), sql, nullptr, nullptr, nullptr));
  }

  void Check(int code) {
    if (code == SQLITE_OK) return;
    throw std::runtime_error(connection_.handle() != nullptr ? sqlite3_errmsg(connection_.handle())
                                                             : sqlite3_errstr(code));
  }

  SqliteConnection connection_;
};

void InsertTable(DatabaseFile& file, const Application& application, const Table& table) {
  const std::string& system = application.system;
  const std::string& data = application.data_type;
  const ScanFlags& scan = table.scan;
  file.Insert("scan_table_info",
              {system, data, table.name, AsNumber(scan.small_table), AsNumber(scan.virtual_table),
               scan.deleted ? kScanTypeAll : kScanTypeExistingOnly, int64_t{scan.flexible_cnt},
               AsNumber(scan.guess_row_id), AsNumber(scan.order_by_rowid)});
  for (const Layout& layout : table.layouts) {
    if (layout.live_only) continue;
    file.Insert("create_table_sql",
                {system, data, int64_t{layout.from_version}, table.name, layout.sql});
  }
  for (const Feature& feature : table.features) {
    file.Insert("field_features",
                {int64_t{application.system_code}, data, table.name, feature.column,
                 AsNumber(feature.not_null), int64_t{feature.kind}, feature.min, feature.max,
                 feature.bytes, feature.not_bytes, int64_t{feature.or_kind}});
  }
  for (const ResultColumn& result : table.results) {
    file.Insert("result_field_info",
                {system, data, table.name, result.column, result.type, int64_t{result.kind},
                 AsNumber(result.unique), AsNumber(result.row_id)});
  }
}

void InsertCoverage(DatabaseFile& file, const Application& application) {
  for (const Table& table : application.tables) {
    file.Insert("covered_table", {application.system, application.data_type, application.name,
                                  table.database.empty() ? application.database : table.database,
                                  table.name, table.limits});
  }
  const auto insert_gap = [&](const std::string& database, const std::string& what,
                              const std::string& why) {
    file.Insert("not_covered",
                {application.system, application.data_type, application.name, database, what, why});
  };
  for (const NotCovered& gap : application.not_covered) {
    insert_gap(application.database, gap.what, gap.why);
  }
  for (const Table& table : application.tables) {
    for (const Layout& layout : table.layouts) {
      if (!layout.unreadable) continue;
      insert_gap(table.database.empty() ? application.database : table.database,
                 "table " + table.name + (layout.note.empty() ? "" : ", " + layout.note),
                 layout.fault);
    }
  }
}

// Removes the half-made file whatever happens; after the move there is nothing to remove.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::string path) : path_(std::move(path)) { Remove(); }
  ~TemporaryFile() { Remove(); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  void Remove() {
    std::error_code ignored;  // there is usually nothing to remove
    std::filesystem::remove(path_, ignored);
  }

  std::string path_;
};

}  // namespace

std::string WriteDatabase(std::vector<Application> applications, const std::string& path) {
  std::sort(applications.begin(), applications.end(),
            [](const Application& a, const Application& b) {
              return std::tie(a.system_code, a.data_code) < std::tie(b.system_code, b.data_code);
            });
  try {
    const TemporaryFile temporary(path + ".tmp" + std::to_string(getpid()));
    DatabaseFile file(temporary.path());
    for (const Application& application : applications) {
      InsertCoverage(file, application);
      if (application.tables.empty()) continue;  // nothing to scan: as if the file were not there
      file.Insert("scan_type_info", {application.system, application.data_type,
                                     AsNumber(application.scan_main_file)});
      for (const Table& table : application.tables) InsertTable(file, application, table);
    }
    file.Commit();
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
      std::filesystem::remove(path + suffix);
    }
    std::filesystem::rename(temporary.path(), path);
  } catch (const std::exception& fault) {
    return fault.what();
  }
  return "";
}

}  // namespace vexaconfigc
