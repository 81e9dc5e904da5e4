#include "storager/row_sink.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "storager/column_lists.h"

namespace {

// A declared type of more than a word can carry constraints of its own, so that a row which the
// unique index accepts is refused or takes another one's place. One word can, too.
bool HasPlainType(const TableFieldInfo& field) {
  if (sqlite3_stricmp(field.field_type_text.c_str(), "UNIQUE") == 0) return false;
  return std::all_of(field.field_type_text.begin(), field.field_type_text.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  });
}

}  // namespace

RowSink::RowSink(const TableFields& fields, SqliteStatement& insert, SavedKeys* keys,
                 uint32_t table_number)
    : fields_(fields), insert_(insert), keys_(keys), key_(fields, table_number) {
  has_plain_types_ = std::all_of(fields.begin(), fields.end(), HasPlainType);
  if (key_.fields().empty() || !has_plain_types_) keys_ = nullptr;
}

void RowSink::UseFeed(sqlite3* connection, const std::string& table_name) {
  if (!has_plain_types_ || insert_.handle() == nullptr) return;
  feed_ =
      std::make_unique<RowFeed>(connection, table_name, JoinColumnNames(fields_), fields_.size());
  if (!feed_->IsReady()) feed_.reset();
}

// The rows of a source whose keys are not known yet. A row that is handed out counts as saved: it
// goes in, or the unique index holds its key already.
class RowSink::NewRows : public RowSource {
 public:
  NewRows(RowSink& sink, RowSource& rows) : sink_(sink), rows_(rows) {}

  // From now on the rows end for a while in front of the one that would pass a limit, or, where no
  // index tells rows apart, that may repeat a key.
  void PauseAt(size_t rows, size_t key_bytes, bool has_index) {
    max_rows_ = rows;
    max_key_bytes_ = key_bytes;
    has_index_ = has_index;
  }
  void PauseNever() { PauseAt(SIZE_MAX, SIZE_MAX, true); }

  const BoundValue* Next() override {
    is_paused_ = count_ >= max_rows_ || key_bytes_ >= max_key_bytes_;
    while (!is_paused_) {
      const BoundValue* row = held_ == nullptr ? rows_.Next() : std::exchange(held_, nullptr);
      at_end_ = row == nullptr;
      if (at_end_) return nullptr;
      const Novelty novelty = sink_.Judge(row, !has_index_);
      if (novelty == Novelty::kKnown) continue;
      are_all_new_ = are_all_new_ && novelty == Novelty::kNew;
      if (has_index_ || novelty == Novelty::kNew) {
        ++count_;
        key_bytes_ += sink_.key_.bytes().size();
        return row;
      }
      held_ = row;
      is_paused_ = true;
    }
    return nullptr;
  }
  bool at_end() const { return at_end_; }
  bool is_paused() const { return is_paused_; }
  bool are_all_new() const { return are_all_new_; }

 private:
  RowSink& sink_;
  RowSource& rows_;
  size_t max_rows_ = SIZE_MAX;
  size_t max_key_bytes_ = SIZE_MAX;
  bool has_index_ = true;
  size_t count_ = 0;
  size_t key_bytes_ = 0;
  bool are_all_new_ = true;
  const BoundValue* held_ = nullptr;
  bool is_paused_ = false;
  bool at_end_ = false;
};

RowSink::Novelty RowSink::Judge(const BoundValue* values, bool must_be_sure) {
  if (keys_ == nullptr) return Novelty::kPossiblyNew;
  if (!key_.Make(values)) return Novelty::kNew;
  if (must_be_sure && !key_.is_exact()) return Novelty::kPossiblyNew;
  switch (keys_->Add(key_.bytes())) {
    case SavedKeys::Added::kWasThere:
      return Novelty::kKnown;
    case SavedKeys::Added::kIsNew:
      return key_.is_exact() ? Novelty::kNew : Novelty::kPossiblyNew;
    case SavedKeys::Added::kNoRoom:
      break;
  }
  return Novelty::kPossiblyNew;
}

void RowSink::ForgetKeys() {
  if (keys_ != nullptr) keys_->GiveUp();
}

SavedKeys::Mark RowSink::MarkKeys() const {
  return keys_ == nullptr ? SavedKeys::Mark{} : keys_->mark();
}

void RowSink::ForgetKeysSince(const SavedKeys::Mark& mark) {
  if (keys_ != nullptr) keys_->ForgetSince(mark);
}

// Feeds rows until they end or pause. A failure drops the row that met it and may undo the whole
// transaction: nobody knows any more what the result holds. The others go in one by one then, since
// one statement for them all would lose them all again.
void RowSink::Feed(NewRows& rows) {
  if (feed_->Insert(rows) == SQLITE_DONE) return;
  feed_.reset();
  ForgetKeys();
}

void RowSink::SaveRest(NewRows& rows) {
  if (feed_ != nullptr && !rows.at_end()) Feed(rows);
  while (const BoundValue* row = rows.at_end() ? nullptr : rows.Next()) InsertRow(row);
}

void RowSink::SaveAll(RowSource& rows) {
  if (feed_ == nullptr) {
    while (const BoundValue* row = rows.Next()) SaveRow(row);
    return;
  }
  NewRows new_rows(*this, rows);
  SaveRest(new_rows);
}

// The index goes only if the set of keys has told all rows apart so far, and comes back in front of
// the first row of which it cannot tell.
bool RowSink::SaveMany(RowSource& rows, UniqueIndex& index, const LateIndexLimits& limits) {
  if (feed_ == nullptr || keys_ == nullptr) {
    SaveAll(rows);
    return true;
  }
  NewRows new_rows(*this, rows);
  new_rows.PauseAt(limits.few_rows, limits.key_bytes, true);
  Feed(new_rows);
  if (feed_ != nullptr && new_rows.is_paused() && new_rows.are_all_new() && index.Drop()) {
    new_rows.PauseAt(limits.rows, limits.key_bytes, false);
    Feed(new_rows);
    // Without the index more rows fit, and more are undone when the disk is full.
    if (feed_ == nullptr || !index.Restore()) return false;
  }
  new_rows.PauseNever();
  SaveRest(new_rows);
  return true;
}

bool RowSink::IsKnown(const BoundValue* values) {
  return keys_ != nullptr && key_.Make(values) && keys_->Contains(key_.bytes());
}

void RowSink::Bind(int index, const BoundValue& value) {
  sqlite3_stmt* statement = insert_.handle();
  switch (value.kind) {
    case kFieldInteger:
      sqlite3_bind_int64(statement, index, value.integer);
      break;
    case kFieldReal:
      sqlite3_bind_double(statement, index, value.real);
      break;
    case kFieldText:
      sqlite3_bind_text(statement, index, reinterpret_cast<const char*>(value.bytes),
                        static_cast<int>(value.size), SQLITE_STATIC);
      break;
    case kFieldBlob:
      // A value of no bytes has nothing to point to, and SQLite stores NULL for it.
      sqlite3_bind_blob(statement, index, value.size == 0 ? nullptr : value.bytes,
                        static_cast<int>(value.size), SQLITE_STATIC);
      break;
    default:
      sqlite3_bind_null(statement, index);
      break;
  }
}

bool RowSink::InsertRow(const BoundValue* values) {
  if (insert_.handle() == nullptr) return false;
  for (size_t i = 0; i < fields_.size(); ++i) Bind(static_cast<int>(i) + 1, values[i]);
  const int result = insert_.Step();
  insert_.Reset();
  // A full disk can undo the whole transaction, rows that were saved long ago among them.
  if (result != SQLITE_DONE && result != SQLITE_CONSTRAINT) ForgetKeys();
  return result == SQLITE_DONE;
}

void RowSink::SaveRow(const BoundValue* values) {
  if (insert_.handle() == nullptr) return;
  const bool has_key = keys_ != nullptr && key_.Make(values);
  if (has_key && keys_->Contains(key_.bytes())) return;
  if (InsertRow(values) && has_key) keys_->Add(key_.bytes());
}

void BindRowValue(const TableFields& fields, const RowValue& row, std::vector<BoundValue>& out) {
  for (const TableFieldInfo& field : fields) {
    BoundValue value;
    const std::string& name = field.field_name;
    if (const auto text = row.text_values.find(name); text != row.text_values.end()) {
      value = BoundValue::Text(reinterpret_cast<const uint8_t*>(text->second.data()),
                               text->second.size());
    } else if (const auto number = row.integer_values.find(name);
               number != row.integer_values.end()) {
      value = BoundValue::Integer(number->second);
    } else if (const auto real = row.real_values.find(name); real != row.real_values.end()) {
      value = BoundValue::Real(real->second);
    } else if (const auto blob = row.blob_values.find(name); blob != row.blob_values.end()) {
      value = BoundValue::Blob(blob->second.data(), blob->second.size());
    }
    out.push_back(value);
  }
}
