#include "data/sample_database.h"

#include <algorithm>
#include <stdexcept>

#include "data/sample_values.h"

namespace bench {

namespace {

constexpr int64_t kRowsAtOnce = 500;

constexpr uint64_t kPageSize = 4096;

// Part of the file at which the missing columns are added.
constexpr uint64_t kWidenPercent = 15;

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

Statement Prepare(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string(sqlite3_errmsg(db)) + " in " + sql);
  }
  return Statement(statement);
}

}  // namespace

SampleDatabase::SampleDatabase(const std::string& path) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open(path.c_str(), &handle);
  handle_.reset(handle);
  if (code != SQLITE_OK) throw std::runtime_error("cannot open " + path);
  Run("PRAGMA page_size=4096; PRAGMA secure_delete=OFF; PRAGMA synchronous=OFF;"
      "PRAGMA journal_mode=OFF; PRAGMA cache_size=-65536");
}

void SampleDatabase::Run(const std::string& sql) {
  char* message = nullptr;
  if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
  const std::string reason = message == nullptr ? "" : message;
  sqlite3_free(message);
  throw std::runtime_error(reason + " in " + sql);
}

int64_t SampleDatabase::Number(const std::string& sql) {
  const Statement query = Prepare(handle_.get(), sql);
  if (sqlite3_step(query.get()) != SQLITE_ROW) throw std::runtime_error("no row: " + sql);
  return sqlite3_column_int64(query.get(), 0);
}

void SampleDatabase::StartLog() {
  Run("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0");
  int kept = 0;
  sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, &kept);
}

void SampleDatabase::Insert(Filling& filling, int64_t count) {
  std::string marks;
  for (size_t i = 0; i < filling.width; ++i) marks += i == 0 ? "?" : ",?";
  const Statement insert =
      Prepare(handle_.get(), "INSERT INTO " + filling.table->name + " VALUES(" + marks + ")");
  for (int64_t i = 0; i < count; ++i) {
    ++filling.rows;
    for (size_t column = 0; column < filling.width; ++column) {
      BindSample(dice_, filling.table->columns[column], filling.rows, insert.get(),
                 static_cast<int>(column) + 1);
    }
    if (sqlite3_step(insert.get()) != SQLITE_DONE) {
      throw std::runtime_error(sqlite3_errmsg(handle_.get()));
    }
    sqlite3_reset(insert.get());
  }
}

void SampleDatabase::Widen(Filling& filling) {
  for (; filling.width < filling.table->columns.size(); ++filling.width) {
    const Column& column = filling.table->columns[filling.width];
    Run("ALTER TABLE " + filling.table->name + " ADD COLUMN " + column.name + " " + column.type);
  }
}

// What is written afterwards takes the place of some deleted rows.
void SampleDatabase::Thin(Filling& filling) {
  Run("DELETE FROM " + filling.table->name +
      " WHERE rowid <= " + std::to_string(filling.rows / 10) + " OR rowid * 7919 % 100 < 22");
  Insert(filling, filling.rows / 50);
}

void SampleDatabase::Fill(const std::vector<Table>& tables, uint64_t bytes, int64_t rows) {
  std::vector<Filling> fillings;
  for (const Table& table : tables) {
    const size_t width = table.first_width == 0 ? table.columns.size() : table.first_width;
    Run(CreateText(table, width));
    fillings.push_back({&table, width});
  }
  Run("BEGIN");
  for (uint64_t percent = 0; percent < 100;) {
    for (Filling& filling : fillings) Insert(filling, std::min(kRowsAtOnce, rows - filling.rows));
    const auto reached = static_cast<uint64_t>(Number("PRAGMA page_count")) * kPageSize;
    percent =
        std::max(reached * 100 / bytes, static_cast<uint64_t>(fillings.front().rows * 100 / rows));
    if (percent < kWidenPercent) continue;
    for (Filling& filling : fillings) Widen(filling);
  }
  for (Filling& filling : fillings) Thin(filling);
  Run("COMMIT");
}

}  // namespace bench
