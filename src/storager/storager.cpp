#include "storager/storager.h"

#include <algorithm>

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "storager/column_lists.h"
#include "storager/unique_index.h"

std::unique_ptr<Storager> Storager::Create(const std::string& path) {
  std::unique_ptr<Storager> storager(new Storager(path));
  const int code = storager->connection_.Open("");
  if (code != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, open database fail, error code : %d, %s.",
          kSourceStorager, __LINE__, code, path.c_str());
    return nullptr;
  }
  storager->Execute("PRAGMA encoding = \"UTF-8\"");
  // A page goes through the log and from there into the file, with the same calls for few bytes as
  // for many.
  storager->Execute("PRAGMA page_size=16384");
  // Some builds of SQLite clear what is free in every page. The free part of a result held nothing
  // but the result.
  storager->Execute("PRAGMA secure_delete=OFF");
  return storager;
}

// Rows arrive in the order of the source, and their keys fall all over the unique index, which
// stays in the cache. More than that would only be memory to be filled.
void Storager::FitCache(uint64_t source_bytes) {
  constexpr uint64_t kLeastKilobytes = 8192;
  constexpr uint64_t kMostKilobytes = 32768;
  const uint64_t kilobytes = std::clamp(source_bytes / 4096, kLeastKilobytes, kMostKilobytes);
  Execute(("PRAGMA cache_size=-" + std::to_string(kilobytes)).c_str());
}

void Storager::Execute(const char* sql) {
  sqlite3_exec(connection_.handle(), sql, nullptr, nullptr, nullptr);
}

// All tables in one transaction: each of their own would wait for the disk.
bool Storager::CreateResultTables(const NeedQueryTables& tables) {
  if (tables.empty()) return true;
  Execute("PRAGMA journal_mode=WAL;");
  Execute("BEGIN");
  for (const auto& [name, fields] : tables) {
    const std::string table = "create table " + name + "(" + JoinColumnDefs(fields) + ")";
    const std::string index = "CREATE UNIQUE INDEX " + UniqueIndex::NameFor(name) + " on " + name +
                              "(" + JoinColumnNamesIf(fields, IsUniqueField) + ")";
    Execute(table.c_str());
    Execute(index.c_str());
  }
  Execute("COMMIT");
  return true;
}
