#include "scansqlite/existing/direct_copy.h"

#include <algorithm>
#include <cstring>

#include "common/sqlitecommon/sqlite_statement.h"
#include "scansqlite/existing/attached_source.h"
#include "scansqlite/existing/copy_stop.h"
#include "storager/column_lists.h"
#include "storager/unique_index.h"

namespace {

constexpr char kFunction[] = "vexa_take";

// The value of the row, for as long as the function runs. A text ends at its first zero byte.
BoundValue BorrowValue(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return BoundValue::Integer(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return BoundValue::Real(sqlite3_value_double(value));
    case SQLITE_TEXT: {
      const unsigned char* text = sqlite3_value_text(value);
      const size_t size = text == nullptr ? 0 : std::strlen(reinterpret_cast<const char*>(text));
      return BoundValue::Text(text, size);
    }
    case SQLITE_BLOB: {
      const void* bytes = sqlite3_value_blob(value);
      return BoundValue::Blob(static_cast<const uint8_t*>(bytes),
                              static_cast<size_t>(sqlite3_value_bytes(value)));
    }
    default:
      return BoundValue::Null();
  }
}

int32_t KindOf(int type) {
  switch (type) {
    case SQLITE_INTEGER:
      return kFieldInteger;
    case SQLITE_FLOAT:
      return kFieldReal;
    case SQLITE_TEXT:
      return kFieldText;
    default:
      return kFieldBlob;
  }
}

bool HasZeroByte(sqlite3_value* text) {
  const unsigned char* bytes = sqlite3_value_text(text);
  if (bytes == nullptr) return true;
  return std::memchr(bytes, 0, static_cast<size_t>(sqlite3_value_bytes(text))) != nullptr;
}

std::string MakeSql(const TableSchemaInfo& table, const TableFields& fields) {
  const std::string columns = JoinColumnNames(fields);
  std::string sql = "insert or ignore into main." + table.table_name + "(" + columns + ") select " +
                    columns + " from " + AttachedSource::Prefix() + table.table_name + " where " +
                    kFunction + "(" + columns + ")";
  if (table.need_order_by_rowid == 1) sql += " ORDER BY rowid ASC";
  return sql;
}

}  // namespace

DirectCopy::DirectCopy(sqlite3* result, const TableSchemaInfo& table, TableFields& fields,
                       RowSink& sink)
    : result_(result),
      table_(table),
      fields_(fields),
      sink_(sink),
      sql_(MakeSql(table, fields)),
      types_(fields.size()),
      row_(fields.size()) {
  // The schema of the evidence must not call it.
  sqlite3_create_function(result, kFunction, static_cast<int>(fields.size()),
                          SQLITE_UTF8 | SQLITE_DIRECTONLY, this, Ask, nullptr, nullptr);
}

DirectCopy::~DirectCopy() {
  for (size_t i = 0; i < types_.size(); ++i) {
    if (types_[i] != 0) fields_[i].field_type = KindOf(types_[i]);
  }
  sqlite3_create_function(result_, kFunction, static_cast<int>(fields_.size()), SQLITE_UTF8,
                          nullptr, nullptr, nullptr, nullptr);
}

DirectCopy::Ending DirectCopy::Run(const LateIndexLimits& limits, uint64_t source_bytes) {
  SqliteStatement copy;
  if (!IsOrdinaryTable() || copy.Prepare(result_, sql_) != SQLITE_OK || SortsRows()) {
    return Ending::kPaused;
  }
  UniqueIndex index(result_, table_.table_name);
  const bool is_worth_it = limits.least_source_bytes <= source_bytes &&
                           source_bytes <= limits.source_bytes && sink_.KeepsKeys();
  has_index_ = !is_worth_it || !index.Drop();
  rows_left_ = limits.rows;
  key_bytes_left_ = limits.key_bytes;
  const int code = copy.Step();
  copy.Finalize();
  if (!has_index_ && !index.Restore()) return Ending::kFailed;
  if (was_stopped_) return Ending::kStopped;
  // A source that is damaged ends the statement, and what it had copied may be undone.
  if (code != SQLITE_DONE) return Ending::kFailed;
  return is_over_ ? Ending::kPaused : Ending::kDone;
}

// Neither a view nor a virtual table, whose code would run beside the result.
bool DirectCopy::IsOrdinaryTable() const {
  SqliteStatement query;
  query.Prepare(result_, std::string("select 1 from ") + AttachedSource::Prefix() +
                             "sqlite_master where type='table' and rootpage>0 and "
                             "name=? collate nocase");
  query.BindText(1, table_.table_name);
  return query.Step() == SQLITE_ROW;
}

// Sorted rows are all asked for before the first one goes in.
bool DirectCopy::SortsRows() const {
  SqliteStatement plan;
  plan.Prepare(result_, "explain query plan " + sql_);
  while (plan.Step() == SQLITE_ROW) {
    if (plan.ColumnText(3).find("TEMP B-TREE") != std::string::npos) return true;
  }
  return plan.result() != SQLITE_DONE;
}

void DirectCopy::Ask(sqlite3_context* context, int, sqlite3_value** values) {
  auto* own = static_cast<DirectCopy*>(sqlite3_user_data(context));
  sqlite3_result_int(context, own->Take(values) ? 1 : 0);
}

bool DirectCopy::Take(sqlite3_value** values) {
  if (IsOver()) return false;
  const bool changes = ReadTypes(values);
  if (changes) {
    for (size_t i = 0; i < row_.size(); ++i) row_[i] = BorrowValue(values[i]);
  } else {
    ReadKey(values);
  }
  switch (sink_.Judge(row_.data(), !has_index_)) {
    case RowSink::Novelty::kKnown:
      ++rows_;
      return false;
    case RowSink::Novelty::kPossiblyNew:
      is_over_ = !has_index_;
      if (is_over_) return false;
      break;
    case RowSink::Novelty::kNew:
      break;
  }
  ++rows_;
  --rows_left_;
  if (changes) sink_.InsertRow(row_.data());
  return !changes;
}

bool DirectCopy::IsOver() {
  if (is_over_) return true;
  was_stopped_ = CopyIsStopped();
  is_over_ = was_stopped_ || (!has_index_ && (rows_left_ == 0 || key_bytes_left_ == 0));
  return is_over_;
}

// True when a value has to change.
bool DirectCopy::ReadTypes(sqlite3_value** values) {
  bool changes = false;
  for (size_t i = 0; i < types_.size(); ++i) {
    const int type = sqlite3_value_type(values[i]);
    if (type == SQLITE_NULL) continue;
    types_[i] = static_cast<uint8_t>(type);
    if (type == SQLITE_TEXT) {
      changes = changes || HasZeroByte(values[i]);
    } else if (type == SQLITE_BLOB) {
      changes = changes || sqlite3_value_bytes(values[i]) == 0;
    }
  }
  return changes;
}

void DirectCopy::ReadKey(sqlite3_value** values) {
  size_t bytes = 0;
  for (const uint32_t field : sink_.unique_fields()) {
    row_[field] = BorrowValue(values[field]);
    bytes += row_[field].size + sizeof(int64_t);
  }
  key_bytes_left_ -= std::min(key_bytes_left_, bytes);
}
