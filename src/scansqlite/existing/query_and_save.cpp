#include <unordered_set>

#include "common/common/log.h"
#include "common/common/scan_control.h"
#include "common/common/source_path.h"
#include "scansqlite/existing/read_column.h"
#include "scansqlite/scan_sqlite.h"
#include "storager/column_lists.h"
#include "storager/row_sink.h"

namespace {

std::string MakeSelectSql(const TableSchemaInfo& table, const TableFields& fields) {
  std::string sql = "select " + JoinColumnNames(fields) + " from " + table.table_name;
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

// Whether the query's columns are the fields, one for one. Then a row goes over value by value;
// otherwise, by a name that SQLite spells in another way or that stands twice, it goes by names.
bool ColumnsAreFields(const SqliteStatement& query, const TableFields& fields) {
  if (query.ColumnCount() != static_cast<int>(fields.size())) return false;
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
  RowCopy(SqliteStatement& query, TableFields& fields)
      : query_(query), fields_(fields), by_place_(ColumnsAreFields(query, fields)) {}

  const BoundValue* Next() override {
    query_.Step();
    if (query_.result() != SQLITE_ROW) return nullptr;
    if (ReadScanControl() == kScanStopped) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::GetNeedQueryTableInfo");
      was_stopped_ = true;
      return nullptr;
    }
    values_.clear();
    if (by_place_) {
      for (size_t i = 0; i < fields_.size(); ++i) {
        values_.push_back(BindColumn(query_, static_cast<int>(i), fields_[i]));
      }
    } else {
      row_ = ReadRow(query_, fields_);
      BindRowValue(fields_, row_, values_);
    }
    return values_.data();
  }
  bool was_stopped() const { return was_stopped_; }

 private:
  SqliteStatement& query_;
  TableFields& fields_;
  bool by_place_;
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
    query.Prepare(connection.handle(), MakeSelectSql(*table, fields));
    GetNeedQueryTableInfo(query, name, tables);
  }
  return kScanSucceeded;
}

// A stop leaves the table's transaction open. Closing the result database rolls it back, unless a
// deleted scan follows, whose first COMMIT on the same connection keeps the rows.
int ScanSqlite::GetNeedQueryTableInfo(SqliteStatement& query, const std::string& table_name,
                                      NeedQueryTables& tables) {
  TableFields* fields = tables.Find(table_name);
  if (fields == nullptr) return kScanSucceeded;
  SqliteStatement insert;
  insert.Prepare(storager_->handle(), MakeInsertSql(table_name, *fields));
  RowSink sink(*fields, insert, KeysOf(table_name), TableNumber(table_name));
  sink.UseFeed(storager_->handle(), table_name);
  RowCopy copy(query, *fields);
  storager_->Execute("BEGIN");
  sink.SaveAll(copy);
  if (copy.was_stopped()) return kScanSucceeded;
  storager_->Execute("COMMIT");
  return kScanSucceeded;
}
