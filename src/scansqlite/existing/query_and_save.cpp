#include <unordered_set>

#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/scan_control.h"
#include "common/common/source_path.h"
#include "scansqlite/existing/attached_source.h"
#include "scansqlite/existing/copy_stop.h"
#include "scansqlite/existing/direct_copy.h"
#include "scansqlite/existing/read_column.h"
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

// Whether the query's columns are the fields, one for one. Otherwise, by a name that SQLite spells
// in another way or that stands twice, a row goes by names.
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
  RowCopy(SqliteStatement& query, TableFields& fields) : query_(query), fields_(fields) {}

  void Skip(uint64_t rows) {
    while (rows-- != 0) query_.Step();
  }

  const BoundValue* Next() override {
    query_.Step();
    if (query_.result() != SQLITE_ROW) return nullptr;
    was_stopped_ = CopyIsStopped();
    if (was_stopped_) return nullptr;
    values_.clear();
    row_ = ReadRow(query_, fields_);
    BindRowValue(fields_, row_, values_);
    return values_.data();
  }
  bool was_stopped() const { return was_stopped_; }

 private:
  SqliteStatement& query_;
  TableFields& fields_;
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
  const AttachedSource source(storager_->handle(), connection.path());
  for (auto& [name, fields] : tables) {
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::QueryAndSave");
      break;
    }
    const TableSchemaInfo* table = table_infos_.Find(name);
    if (table == nullptr) continue;
    SqliteStatement query;
    query.Prepare(connection.handle(), MakeSelectSql(*table, JoinColumnNames(fields)));
    GetNeedQueryTableInfo(query, name, tables, source.is_attached());
  }
  return kScanSucceeded;
}

// A stop leaves the table's transaction open. Closing the result database rolls it back, unless a
// deleted scan follows, whose first COMMIT on the same connection keeps the rows.
int ScanSqlite::GetNeedQueryTableInfo(SqliteStatement& query, const std::string& table_name,
                                      NeedQueryTables& tables, bool is_attached) {
  TableFields* fields = tables.Find(table_name);
  const TableSchemaInfo* table = table_infos_.Find(table_name);
  if (fields == nullptr || table == nullptr) return kScanSucceeded;
  SqliteStatement insert;
  insert.Prepare(storager_->handle(), MakeInsertSql(table_name, *fields));
  RowSink sink(*fields, insert, KeysOf(table_name), TableNumber(table_name));
  storager_->Execute("BEGIN");
  const bool is_direct = is_attached && sink.TakesManyRows() && ColumnsAreFields(query, *fields);
  if (!CopyRows(query, *table, *fields, sink, is_direct)) return kScanSucceeded;
  storager_->Execute("COMMIT");
  return kScanSucceeded;
}

bool ScanSqlite::CopyRows(SqliteStatement& query, const TableSchemaInfo& table, TableFields& fields,
                          RowSink& sink, bool is_direct) {
  uint64_t copied = 0;
  if (is_direct) {
    uint64_t source_bytes = 0;
    MeasureFile(working_db_path_, source_bytes);
    const SavedKeys::Mark keys = sink.MarkKeys();
    DirectCopy copy(storager_->handle(), table, fields, sink);
    switch (copy.Run(late_index_limits_, source_bytes)) {
      case DirectCopy::Ending::kDone:
        return true;
      case DirectCopy::Ending::kStopped:
        return false;
      case DirectCopy::Ending::kPaused:
        copied = copy.rows();
        break;
      case DirectCopy::Ending::kFailed:
        sink.ForgetKeysSince(keys);
        storager_->Execute("ROLLBACK");
        storager_->Execute("BEGIN");
        if (copy.was_stopped()) return false;
        break;
    }
  }
  sink.UseFeed(storager_->handle(), table.table_name);
  RowCopy copy(query, fields);
  copy.Skip(copied);
  sink.SaveAll(copy);
  return !copy.was_stopped();
}
