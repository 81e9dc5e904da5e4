#include "common/sqlitecommon/schema_query.h"

#include "common/common/log.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/sqlite_statement.h"

namespace {

constexpr int kLineRootPage = 669;  // stands in the message's text; it does not follow the code

bool StepGaveAnAnswer(int code) { return code == SQLITE_ROW || code == SQLITE_DONE; }

}  // namespace

std::string GetTableSql(sqlite3* connection, const std::string& table_name) {
  SqliteStatement query;
  query.Prepare(connection, "select sql from sqlite_master where type = 'table' and tbl_name=?");
  query.BindText(1, table_name);
  if (!StepGaveAnAnswer(query.Step())) return {};
  return query.ColumnText(0);
}

int32_t GetRootPage(sqlite3* connection, const std::string& table_name) {
  SqliteStatement query;
  constexpr const char* kSql =
      "select rootpage from sqlite_master where type = 'table' and tbl_name=?";
  if (query.Prepare(connection, kSql) != SQLITE_OK) return -1;
  if (query.BindText(1, table_name) != SQLITE_OK) return -1;
  const int code = query.Step();
  if (StepGaveAnAnswer(code)) return query.ColumnInt(0);
  LogEx(kLogModule, kLogError, "%s, %d SQLite Error Code : %d", kSourceSqliteCommon, kLineRootPage,
        code);
  LogEx(kLogModule, kLogError, "SQLite Error : %s\n", sqlite3_errmsg(connection));
  return -1;
}
