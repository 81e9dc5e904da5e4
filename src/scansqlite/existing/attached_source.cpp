#include "scansqlite/existing/attached_source.h"

#include "common/sqlitecommon/sqlite_statement.h"

AttachedSource::AttachedSource(sqlite3* connection, const std::string& path)
    : connection_(connection) {
  SqliteStatement attach;
  attach.Prepare(connection, "attach ? as vexa_source");
  attach.BindText(1, path);
  is_attached_ = attach.Step() == SQLITE_DONE;
}

AttachedSource::~AttachedSource() {
  if (!is_attached_) return;
  sqlite3_exec(connection_, "detach vexa_source", nullptr, nullptr, nullptr);
}
