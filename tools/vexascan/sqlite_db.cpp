#include "sqlite_db.h"

namespace vexascan {
namespace {

constexpr int kWaitForLockMs = 5000;

[[noreturn]] void Fail(sqlite3* handle, std::string_view doing) {
  throw DatabaseError(std::string(doing) + ": " +
                      (handle != nullptr ? sqlite3_errmsg(handle) : "out of memory"));
}

// A path as SQLite's URI form takes it: everything but plain characters as %XX.
std::string UriOf(const std::filesystem::path& path) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : std::filesystem::absolute(path).string()) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '/' || c == '.' || c == '-' || c == '_';
    if (plain) {
      uri += c;
    } else {
      uri += '%';
      uri += kHex[byte >> 4U];
      uri += kHex[byte & 15U];
    }
  }
  return uri + "?immutable=1";
}

std::string BytesOf(const void* data, int length) {
  if (data == nullptr || length <= 0) {
    return {};
  }
  return {static_cast<const char*>(data), static_cast<std::size_t>(length)};
}

}  // namespace

Statement::Statement(sqlite3* handle, std::string_view sql) : handle_(handle) {
  sqlite3_stmt* raw = nullptr;
  const int code =
      sqlite3_prepare_v2(handle, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
  statement_.reset(raw);
  if (code != SQLITE_OK) {
    Fail(handle_, sql);
  }
}

void Statement::Bind(int index, const Value& value) {
  sqlite3_stmt* raw = statement_.get();
  int code = SQLITE_OK;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    code = sqlite3_bind_int64(raw, index, *integer);
  } else if (const auto* real = std::get_if<double>(&value)) {
    code = sqlite3_bind_double(raw, index, *real);
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    code =
        sqlite3_bind_text64(raw, index, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  } else if (const auto* blob = std::get_if<Blob>(&value)) {
    code =
        sqlite3_bind_blob64(raw, index, blob->bytes.data(), blob->bytes.size(), SQLITE_TRANSIENT);
  } else {
    code = sqlite3_bind_null(raw, index);
  }
  if (code != SQLITE_OK) {
    Fail(handle_, "bind");
  }
}

bool Statement::Step() {
  const int code = sqlite3_step(statement_.get());
  if (code != SQLITE_ROW && code != SQLITE_DONE) {
    Fail(handle_, sqlite3_sql(statement_.get()));
  }
  return code == SQLITE_ROW;
}

// The code of a reset repeats that of the step before it, which has been reported already.
void Statement::Reset() { static_cast<void>(sqlite3_reset(statement_.get())); }

int Statement::ColumnCount() const { return sqlite3_column_count(statement_.get()); }

std::int64_t Statement::Integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::Text(int column) const {
  const unsigned char* text = sqlite3_column_text(statement_.get(), column);
  return BytesOf(text, sqlite3_column_bytes(statement_.get(), column));
}

Value Statement::Column(int column) const {
  sqlite3_stmt* raw = statement_.get();
  switch (sqlite3_column_type(raw, column)) {
    case SQLITE_INTEGER:
      return Integer(column);
    case SQLITE_FLOAT:
      return sqlite3_column_double(raw, column);
    case SQLITE_TEXT:
      return Text(column);
    case SQLITE_BLOB: {
      const void* data = sqlite3_column_blob(raw, column);
      return Blob{BytesOf(data, sqlite3_column_bytes(raw, column))};
    }
    default:
      return std::monostate{};
  }
}

Database::Database(const std::filesystem::path& path)
    : Database(path.string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) {}

Database::Database(const std::string& name, int flags) {
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &raw, flags, nullptr);
  handle_.reset(raw);
  if (code != SQLITE_OK) {
    Fail(raw, name);
  }
  sqlite3_busy_timeout(raw, kWaitForLockMs);
}

Database Database::OpenImmutable(const std::filesystem::path& path) {
  return Database(UriOf(path), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

void Database::Execute(const std::string& sql) {
  if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    Fail(handle_.get(), sql);
  }
}

Statement Database::Prepare(std::string_view sql) const { return {handle_.get(), sql}; }

std::int64_t Database::SingleInteger(std::string_view sql) const {
  Statement statement = Prepare(sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

std::string Database::SingleText(std::string_view sql) const {
  Statement statement = Prepare(sql);
  return statement.Step() ? statement.Text(0) : std::string();
}

std::string QuoteName(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) {
    quoted.append(c == '"' ? 2 : 1, c);
  }
  return quoted + '"';
}

std::vector<std::string> ColumnNames(const Database& database, const std::string& schema,
                                     const std::string& table) {
  Statement statement =
      database.Prepare("PRAGMA " + QuoteName(schema) + ".table_info(" + QuoteName(table) + ")");
  std::vector<std::string> names;
  while (statement.Step()) {
    names.push_back(statement.Text(1));
  }
  return names;
}

}  // namespace vexascan
