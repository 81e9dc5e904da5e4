#include "differential/both_scans.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <typeinfo>

#include "reference/plain_scan.h"
#include "scansqlite/scan_sqlite.h"
#include "support/scan_fixture.h"
#include "vexalogsdk/vexa_log_sdk.h"

namespace fs = std::filesystem;

// Hundreds of small databases are written and none has to outlive a power failure; waiting for the
// disk would take most of the time. SQLite calls these two through the program's symbols.
extern "C" {
[[gnu::visibility("default")]] int fsync(int /*file*/) { return 0; }
[[gnu::visibility("default")]] int fdatasync(int /*file*/) { return 0; }
}

namespace differential {

namespace {

// The log without its time, and without the lines of code that some messages state: the same
// message stands on another line of the plain walk.
std::vector<std::string> ReadLog(const std::string& path) {
  static const std::regex kCodeLine("(Line : |at )[0-9]+");
  std::vector<std::string> lines;
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    line.erase(0, line.find(' ') + 1);
    if (line.find("Line : ") != std::string::npos || line.find(", at ") != std::string::npos) {
      line = std::regex_replace(line, kCodeLine, "$1#");
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

struct CloseDb {
  void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

Statement Prepare(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sql;
  return Statement(statement);
}

std::string BytesText(sqlite3_stmt* row, int column) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(row, column));
  std::string text;
  for (int i = 0; i < sqlite3_column_bytes(row, column); ++i) {
    const char c = bytes[i];
    text += c >= 32 && c < 127 && c != '%' ? std::string(1, c)
                                           : "%" + std::to_string(static_cast<uint8_t>(c)) + ";";
  }
  return text;
}

std::string RowText(sqlite3_stmt* row) {
  std::string text;
  for (int i = 0; i < sqlite3_column_count(row); ++i) {
    const int type = sqlite3_column_type(row, i);
    text += i == 0 ? "" : " | ";
    if (type == SQLITE_NULL) {
      text += "NULL";
    } else if (type == SQLITE_INTEGER) {
      text += std::to_string(sqlite3_column_int64(row, i));
    } else if (type == SQLITE_FLOAT) {
      char number[64];
      std::snprintf(number, sizeof number, "%a", sqlite3_column_double(row, i));
      text += number;
    } else {
      text += (type == SQLITE_TEXT ? "'" : "x'") + BytesText(row, i) + "'";
    }
  }
  return text;
}

void ReadResult(const std::string& path, Outcome& outcome) {
  sqlite3* opened = nullptr;
  sqlite3_open(path.c_str(), &opened);
  const std::unique_ptr<sqlite3, CloseDb> db(opened);
  std::vector<std::string> tables;
  const Statement schema = Prepare(opened, "SELECT type, name, sql FROM sqlite_master");
  while (sqlite3_step(schema.get()) == SQLITE_ROW) {
    outcome.rows.push_back(RowText(schema.get()));
    const std::string type = reinterpret_cast<const char*>(sqlite3_column_text(schema.get(), 0));
    if (type != "table") continue;
    tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(schema.get(), 1)));
  }
  for (const std::string& table : tables) {
    outcome.rows.push_back("rows of " + table);
    const Statement query = Prepare(opened, "SELECT rowid, * FROM " + table + " ORDER BY rowid");
    while (sqlite3_step(query.get()) == SQLITE_ROW) {
      outcome.rows.push_back(RowText(query.get()));
      ++outcome.row_count;
    }
  }
}

template <typename Scan>
int RunRange(Scan& scan, Range range) {
  const int code = scan.Init();
  if (code != kScanSucceeded) return code;
  switch (range) {
    case Range::kAll:
      return scan.Scan();
    case Range::kLive:
      return scan.ScanExist();
    case Range::kDeleted:
      return scan.ScanDeleted();
  }
  return -1;
}

}  // namespace

::testing::AssertionResult SameLines(const std::vector<std::string>& library,
                                     const std::vector<std::string>& plain) {
  if (library == plain) return ::testing::AssertionSuccess();
  const auto [a, b] = std::mismatch(library.begin(), library.end(), plain.begin(), plain.end());
  const auto at = a - library.begin();
  ::testing::AssertionResult result = ::testing::AssertionFailure();
  result << "line " << at << " of " << library.size() << " (library) and " << plain.size()
         << " (plain)\n  library: " << (a == library.end() ? "-" : *a)
         << "\n  plain:   " << (b == plain.end() ? "-" : *b);
  if (at > 0) result << "\n  before:  " << library[static_cast<size_t>(at) - 1];
  return result;
}

bool RunsLong() { return std::getenv("VEXA_LONG_TESTS") != nullptr; }

uint64_t SeedsOf(uint64_t usual) { return RunsLong() ? 20 * usual : usual; }

BothScans::BothScans() {
  for (const char* name : {"source", "result", "temp", "work"}) {
    fs::create_directory(folder_.path() / name);
  }
}

ScanContext BothScans::context() const {
  ScanContext context;
  context.data_type = data_type_;
  context.work_folder = folder_.File("work");
  context.source_db_path = folder_.File("source/source.db");
  context.wal_path = context.source_db_path + "-wal";
  context.dest_db_path = folder_.File("result/found.db");
  context.temp_folder = folder_.File("temp");
  return context;
}

void BothScans::Configure(const Application& application) {
  fs::remove_all(folder_.path() / "work");
  fs::create_directory(folder_.path() / "work");
  data_type_ = application.owner.data == "wechat" ? 9 : 1;
  WriteConfig(application, folder_.File("work/VexaConfiger.db"));
}

void BothScans::SetSource(const Source& source) const {
  const ScanContext paths = context();
  WriteBytes(paths.source_db_path, source.db);
  fs::remove(paths.wal_path);
  if (!source.log.empty()) WriteBytes(paths.wal_path, source.log);
}

// Nothing of one scan is there for the next.
void BothScans::Clean() const {
  for (const char* name : {"result", "temp"}) {
    fs::remove_all(folder_.path() / name);
    fs::create_directory(folder_.path() / name);
  }
  fs::remove(folder_.File("scan.log"));
}

template <typename MakeScan>
Outcome BothScans::Run(Range range, const MakeScan& make_scan) const {
  Clean();
  Outcome outcome;
  const ScanContext paths = context();
  InitLogEx("", "VexaSqliteSDK", folder_.File("scan.log").c_str());
  try {
    const auto scan = make_scan(paths);
    outcome.ending = std::to_string(RunRange(*scan, range));
  } catch (const std::exception& error) {
    outcome.ending = std::string(typeid(error).name()) + " " + error.what();
  }
  UninitLog();
  outcome.log = ReadLog(folder_.File("scan.log"));
  ReadResult(paths.dest_db_path, outcome);
  return outcome;
}

Outcome BothScans::RunLibrary(Range range) const {
  return Run(range, [](const ScanContext& paths) {
    return std::make_unique<ScanSqlite>(&paths, nullptr, nullptr);
  });
}

Outcome BothScans::RunPlain(Range range) const {
  return Run(range, [](const ScanContext& paths) { return std::make_unique<PlainScan>(paths); });
}

Outcome BothScans::RunWith(const ScanOptions& options, Range range) const {
  return Run(range, [&options](const ScanContext& paths) {
    return std::make_unique<OptionScan>(paths, options);
  });
}

void BothScans::ExpectEqual(Range range, const std::string& name) {
  const Outcome library = RunLibrary(range);
  const Outcome plain = RunPlain(range);
  EXPECT_EQ(library.ending, plain.ending) << name;
  EXPECT_TRUE(SameLines(library.rows, plain.rows)) << name << ", rows";
  EXPECT_TRUE(SameLines(library.log, plain.log)) << name << ", log";
  rows_seen_ += plain.row_count;
}

}  // namespace differential
