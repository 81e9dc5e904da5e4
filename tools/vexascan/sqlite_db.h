// A thin owner of SQLite handles for the tool's own reading and writing. Every failure is a
// DatabaseError that carries SQLite's words.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vexascan {

class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One value as SQLite stores it: NULL, integer, real, text, or a blob (tagged apart from text).
struct Blob {
  std::string bytes;
  bool operator==(const Blob&) const = default;
  auto operator<=>(const Blob&) const = default;
};
using Value = std::variant<std::monostate, std::int64_t, double, std::string, Blob>;

class Statement {
 public:
  Statement(sqlite3* handle, std::string_view sql);

  void Bind(int index, const Value& value);
  bool Step();  // true while a row stands ready
  void Reset();

  int ColumnCount() const;
  std::int64_t Integer(int column) const;
  std::string Text(int column) const;
  Value Column(int column) const;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  sqlite3* handle_;  // borrowed from the Database
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

class Database {
 public:
  // Opens for reading and writing, creating the file when it is missing.
  explicit Database(const std::filesystem::path& path);

  // Opens for reading without locks and without side files; for files that must not change.
  static Database OpenImmutable(const std::filesystem::path& path);

  void Execute(const std::string& sql);
  Statement Prepare(std::string_view sql) const;
  std::int64_t SingleInteger(std::string_view sql) const;
  std::string SingleText(std::string_view sql) const;

 private:
  Database(const std::string& name, int flags);

  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  std::unique_ptr<sqlite3, Closer> handle_;
};

// A name as SQL takes it whatever letters it holds.
std::string QuoteName(std::string_view name);

std::vector<std::string> ColumnNames(const Database& database, const std::string& schema,
                                     const std::string& table);

}  // namespace vexascan
