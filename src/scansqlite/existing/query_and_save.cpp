#include <optional>
#include <unordered_set>

#include "common/common/log.h"
#include "common/common/scan_control.h"
#include "common/common/source_path.h"
#include "scansqlite/existing/read_column.h"
#include "scansqlite/existing/row_function.h"
#include "scansqlite/scan_sqlite.h"
#include "storager/column_lists.h"
#include "storager/row_sink.h"

namespace {

std::string MakeSelectSql(const TableSchemaInfo& table, const std::string& columns) {
  std::string sql = "select " + columns + " from " + table.table_name;
  if (table.need_order_by_rowid == 1) sql += " ORDER BY rowid ASC";
  return sql;
}

RowValue ReadRow(const SqliteStatement& query, TableFields& fields) {
  RowValue row;
  const int column_count = query.ColumnCount();
  int index = 0;
  for (TableFieldInfo& field : fields) {
    if (index >= column_count) break;
    ReadColumn(query, index++, row, field);
  }
  return row;
}

// Whether the query's columns are the fields, one for one. Then a row goes over as a whole;
// otherwise, by a name that SQLite spells in another way or that stands twice, it goes by names.
bool ColumnsAreFields(const SqliteStatement& query, const TableFields& fields) {
  if (fields.empty() || query.ColumnCount() != static_cast<int>(fields.size())) return false;
  std::unordered_set<std::string> names;
  for (size_t i = 0; i < fields.size(); ++i) {
    const std::string& name = fields[i].field_name;
    if (query.ColumnName(static_cast<int>(i)) != name || !names.insert(name).second) return false;
  }
  return true;
}

// The rows of a query on their way into the result, until the scan is to stop.
class RowCopy : public RowSource {
 public:
  // `query` has the columns as they stand; they are the arguments in `whole_row_sql`, a query for
  // the same rows.
  RowCopy(SqliteStatement& query, TableFields& fields, sqlite3* source,
          const std::string& whole_row_sql)
      : query_(query), fields_(fields) {
    if (!ColumnsAreFields(query, fields)) return;
    function_.emplace(source, fields);
    if (whole_rows_.Prepare(source, whole_row_sql) != SQLITE_OK) function_.reset();
  }

  const BoundValue* Next() override {
    const BoundValue* row = function_ ? NextWhole() : NextByNames();
    if (row == nullptr) return nullptr;
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::GetNeedQueryTableInfo");
      was_stopped_ = true;
      return nullptr;
    }
    return row;
  }
  bool was_stopped() const { return was_stopped_; }

 private:
  const BoundValue* NextWhole() {
    if (whole_rows_.Step() != SQLITE_ROW) return nullptr;
    if (function_->TakeCalls() == 1) return function_->values();
    // The rows are sorted, which shows at the first one.
    whole_rows_.Finalize();
    function_.reset();
    return NextByNames();
  }

  const BoundValue* NextByNames() {
    query_.Step();
    if (query_.result() != SQLITE_ROW) return nullptr;
    values_.clear();
    row_ = ReadRow(query_, fields_);
    BindRowValue(fields_, row_, values_);
    return values_.data();
  }

  SqliteStatement& query_;
  TableFields& fields_;
  std::optional<RowFunction> function_;
  SqliteStatement whole_rows_;  // ends before the function that it calls
  bool was_stopped_ = false;
  RowValue row_;
  std::vector<BoundValue> values_;
};

}  // namespace

int ScanSqlite::QueryAndSave(NeedQueryTables& tables) {
  SqliteConnection connection;
  if (connection.Open(working_db_path_) != SQLITE_OK) {
    LogEx(kLogModule, kLogError, "[%s], at %d line database open fail.", kSourceScanSqlite,
          __LINE__);
    return kScanWorkingCopyNotOpen;
  }
  for (auto& [name, fields] : tables) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::QueryAndSave");
      break;
    }
    const TableSchemaInfo* table = table_infos_.Find(name);
    if (table == nullptr) continue;
    SqliteStatement query;
    query.Prepare(connection.handle(), MakeSelectSql(*table, JoinColumnNames(fields)));
    GetNeedQueryTableInfo(query, name, tables);
  }
  return kScanSucceeded;
}

// A stop leaves the table's transaction open. Closing the result database rolls it back, unless a
// deleted scan follows, whose first COMMIT on the same connection keeps the rows.
int ScanSqlite::GetNeedQueryTableInfo(SqliteStatement& query, const std::string& table_name,
                                      NeedQueryTables& tables) {
  TableFields* fields = tables.Find(table_name);
  const TableSchemaInfo* table = table_infos_.Find(table_name);
  if (fields == nullptr || table == nullptr) return kScanSucceeded;
  SqliteStatement insert;
  insert.Prepare(storager_->handle(), MakeInsertSql(table_name, *fields));
  RowSink sink(*fields, insert, KeysOf(table_name), TableNumber(table_name));
  sink.UseFeed(storager_->handle(), table_name);
  // A transaction that is open already holds other rows too, and must not be rolled back for these.
  const bool begins = sqlite3_get_autocommit(storager_->handle()) != 0;
  storager_->Execute("BEGIN");
  if (!CopyRows(query, *table, *fields, sink, begins)) return kScanSucceeded;
  storager_->Execute("COMMIT");
  return kScanSucceeded;
}

bool ScanSqlite::CopyRows(SqliteStatement& query, const TableSchemaInfo& table, TableFields& fields,
                          RowSink& sink, bool may_roll_back) {
  sqlite3* source = sqlite3_db_handle(query.handle());
  const std::string whole_rows = MakeSelectSql(table, RowFunction::Call(JoinColumnNames(fields)));
  if (may_roll_back) {
    const SavedKeys::Mark keys = sink.MarkKeys();
    RowCopy copy(query, fields, source, whole_rows);
    UniqueIndex index(storager_->handle(), table.table_name);
    if (sink.SaveMany(copy, index, late_index_limits_)) return !copy.was_stopped();
    sink.ForgetKeysSince(keys);
    storager_->Execute("ROLLBACK");
    storager_->Execute("BEGIN");
    if (copy.was_stopped()) return false;
  }
  query.Reset();
  RowCopy copy(query, fields, source, whole_rows);
  sink.SaveAll(copy);
  return !copy.was_stopped();
}
