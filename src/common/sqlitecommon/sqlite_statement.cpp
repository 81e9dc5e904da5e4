#include "common/sqlitecommon/sqlite_statement.h"

#include <utility>

int SqliteStatement::Prepare(sqlite3* connection, std::string sql) {
  Finalize();
  sql_ = std::move(sql);
  result_ = sqlite3_prepare_v2(connection, sql_.c_str(), static_cast<int>(sql_.size()), &statement_,
                               nullptr);
  return result_;
}

int SqliteStatement::Step() { return result_ = sqlite3_step(statement_); }

int SqliteStatement::Reset() { return result_ = sqlite3_reset(statement_); }

void SqliteStatement::Finalize() {
  if (statement_ != nullptr) sqlite3_finalize(statement_);
  statement_ = nullptr;
}

int SqliteStatement::ColumnCount() const {
  return statement_ == nullptr ? 0 : sqlite3_column_count(statement_);
}

int SqliteStatement::ColumnType(int index) const {
  return statement_ == nullptr ? 0 : sqlite3_column_type(statement_, index);
}

std::string SqliteStatement::ColumnName(int index) const {
  const char* name = statement_ == nullptr ? nullptr : sqlite3_column_name(statement_, index);
  return name == nullptr ? std::string() : std::string(name);
}

int SqliteStatement::ColumnInt(int index) const {
  return statement_ == nullptr ? 0 : sqlite3_column_int(statement_, index);
}

int64_t SqliteStatement::ColumnInt64(int index) const {
  return statement_ == nullptr ? 0 : sqlite3_column_int64(statement_, index);
}

double SqliteStatement::ColumnDouble(int index) const {
  return statement_ == nullptr ? 0.0 : sqlite3_column_double(statement_, index);
}

std::string SqliteStatement::ColumnText(int index) const {
  if (statement_ == nullptr) return {};
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, index));
  return text == nullptr ? std::string() : std::string(text);
}

std::vector<uint8_t> SqliteStatement::ColumnBlob(int index) const {
  if (statement_ == nullptr) return {};
  const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(statement_, index));
  const int size = sqlite3_column_bytes(statement_, index);
  if (bytes == nullptr || size <= 0) return {};
  return {bytes, bytes + size};
}

int SqliteStatement::BindInt64(int index, int64_t value) {
  result_ = statement_ == nullptr ? 0 : sqlite3_bind_int64(statement_, index, value);
  return result_;
}

int SqliteStatement::BindDouble(int index, double value) {
  result_ = statement_ == nullptr ? 0 : sqlite3_bind_double(statement_, index, value);
  return result_;
}

int SqliteStatement::BindText(int index, const std::string& value) {
  result_ = statement_ == nullptr
                ? 0
                : sqlite3_bind_text(statement_, index, value.data(), static_cast<int>(value.size()),
                                    SQLITE_TRANSIENT);
  return result_;
}

// A value of no bytes has nothing to point to, and SQLite stores NULL for it.
int SqliteStatement::BindBlob(int index, const std::vector<uint8_t>& value) {
  result_ = statement_ == nullptr
                ? 0
                : sqlite3_bind_blob(statement_, index, value.empty() ? nullptr : value.data(),
                                    static_cast<int>(value.size()), SQLITE_TRANSIENT);
  return result_;
}

int SqliteStatement::BindNull(int index) {
  result_ = statement_ == nullptr ? 0 : sqlite3_bind_null(statement_, index);
  return result_;
}
