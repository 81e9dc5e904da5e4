#include "recovery/database.h"

namespace recovery {
namespace {

void Check(sqlite3* handle, int code, const std::string& what) {
  if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return;
  throw DatabaseError(what + ": " + sqlite3_errmsg(handle), sqlite3_extended_errcode(handle));
}

struct Binder {
  sqlite3_stmt* statement;
  int parameter;

  int operator()(std::monostate) const { return sqlite3_bind_null(statement, parameter); }
  int operator()(int64_t number) const { return sqlite3_bind_int64(statement, parameter, number); }
  int operator()(double number) const { return sqlite3_bind_double(statement, parameter, number); }
  int operator()(const std::string& text) const {
    return sqlite3_bind_text64(statement, parameter, text.data(), text.size(), SQLITE_TRANSIENT,
                               SQLITE_UTF8);
  }
  int operator()(const Blob& blob) const {
    return sqlite3_bind_blob64(statement, parameter, blob.bytes.data(), blob.bytes.size(),
                               SQLITE_TRANSIENT);
  }
};

std::string Doubled(const std::string& text, char quote) {
  std::string out(1, quote);
  for (const char c : text) {
    out += c;
    if (c == quote) out += c;
  }
  return out + quote;
}

}  // namespace

Statement::Statement(sqlite3* handle, const std::string& sql) : handle_(handle) {
  sqlite3_stmt* statement = nullptr;
  Check(handle, sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr), sql);
  statement_.reset(statement);
}

void Statement::Bind(int parameter, const Value& value) {
  Check(handle_, std::visit(Binder{statement_.get(), parameter}, value), "bind");
}

bool Statement::Step() {
  const int code = sqlite3_step(statement_.get());
  Check(handle_, code, sqlite3_sql(statement_.get()));
  return code == SQLITE_ROW;
}

void Statement::Reset() { sqlite3_reset(statement_.get()); }

Value Statement::Column(int column) const {
  sqlite3_stmt* row = statement_.get();
  const auto text = [&](const void* bytes) {
    const auto size = static_cast<size_t>(sqlite3_column_bytes(row, column));
    return size == 0 ? std::string() : std::string(static_cast<const char*>(bytes), size);
  };
  switch (sqlite3_column_type(row, column)) {
    case SQLITE_INTEGER:
      return int64_t{sqlite3_column_int64(row, column)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(row, column);
    case SQLITE_TEXT:
      return text(sqlite3_column_text(row, column));
    case SQLITE_BLOB:
      return Blob{text(sqlite3_column_blob(row, column))};
    default:
      return {};
  }
}

Database::Database(const std::string& path) {
  sqlite3* handle = nullptr;
  const int code =
      sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  handle_.reset(handle);
  Check(handle, code, path);
}

void Database::Run(const std::string& sql) {
  Check(handle_.get(), sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr), sql);
}

std::vector<Row> Database::Rows(const std::string& sql) {
  Statement statement = Prepare(sql);
  std::vector<Row> rows;
  while (statement.Step()) {
    Row& row = rows.emplace_back();
    for (int column = 0; column < statement.columns(); ++column) {
      row.push_back(statement.Column(column));
    }
  }
  return rows;
}

Value Database::One(const std::string& sql) {
  Statement statement = Prepare(sql);
  return statement.Step() ? statement.Column(0) : Value{};
}

int64_t Database::Number(const std::string& sql) {
  const Value value = One(sql);
  const auto* number = std::get_if<int64_t>(&value);
  return number != nullptr ? *number : 0;
}

std::string Database::Serialized() {
  sqlite3_int64 size = 0;
  const std::unique_ptr<unsigned char, void (*)(void*)> bytes(
      sqlite3_serialize(handle_.get(), "main", &size, 0), sqlite3_free);
  if (bytes == nullptr) throw DatabaseError("serialize", SQLITE_NOMEM);
  return {reinterpret_cast<const char*>(bytes.get()), static_cast<size_t>(size)};
}

std::string Quoted(const std::string& name) { return Doubled(name, '"'); }

std::string SqlText(const std::string& text) { return Doubled(text, '\''); }

}  // namespace recovery
