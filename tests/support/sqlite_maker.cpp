#include "support/sqlite_maker.h"

#include <stdexcept>

namespace {

constexpr const char* kHexDigits = "0123456789ABCDEF";

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

std::string ValueText(sqlite3_stmt* statement, int column) {
  if (sqlite3_column_type(statement, column) == SQLITE_NULL) return "NULL";
  if (sqlite3_column_type(statement, column) != SQLITE_BLOB) {
    const unsigned char* text = sqlite3_column_text(statement, column);
    return {reinterpret_cast<const char*>(text),
            static_cast<size_t>(sqlite3_column_bytes(statement, column))};
  }
  const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(statement, column));
  std::string text = "x'";
  for (int i = 0; i < sqlite3_column_bytes(statement, column); ++i) {
    text += kHexDigits[bytes[i] >> 4];
    text += kHexDigits[bytes[i] & 0xF];
  }
  return text + "'";
}

}  // namespace

SqliteMaker::SqliteMaker(const std::string& path) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open(path.c_str(), &handle);
  handle_.reset(handle);
  if (code != SQLITE_OK) throw std::runtime_error("cannot open " + path);
  Run("PRAGMA secure_delete=OFF; PRAGMA synchronous=OFF");
  if (Number("PRAGMA secure_delete") != 0) throw std::runtime_error("deleted bytes are wiped");
}

void SqliteMaker::Run(const std::string& sql) {
  char* message = nullptr;
  const int code = sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, &message);
  const std::string reason = message == nullptr ? "" : message;
  sqlite3_free(message);
  if (code != SQLITE_OK) throw std::runtime_error(reason + " in: " + sql);
}

TextRows SqliteMaker::Rows(const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  const int code = sqlite3_prepare_v2(handle_.get(), sql.c_str(), -1, &raw, nullptr);
  const Statement statement(raw);
  if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(handle_.get()));
  TextRows rows;
  int step = sqlite3_step(raw);
  for (; step == SQLITE_ROW; step = sqlite3_step(raw)) {
    std::vector<std::string> row;
    for (int i = 0; i < sqlite3_column_count(raw); ++i) row.push_back(ValueText(raw, i));
    rows.push_back(std::move(row));
  }
  if (step != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(handle_.get()));
  return rows;
}

std::string SqliteMaker::Text(const std::string& sql) { return Rows(sql).at(0).at(0); }

int64_t SqliteMaker::Number(const std::string& sql) { return std::stoll(Text(sql)); }

void SqliteMaker::KeepLogOnClose() {
  int kept = 0;
  sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, &kept);
  if (kept != 1) throw std::runtime_error("the log cannot be kept");
}

void SqliteMaker::StartLog() {
  Run("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0");
  if (Text("PRAGMA journal_mode") != "wal") throw std::runtime_error("no log");
  KeepLogOnClose();
}

std::string SqlText(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += c;
    quoted += c;
  }
  return quoted + "'";
}
