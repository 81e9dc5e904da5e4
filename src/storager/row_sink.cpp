#include "storager/row_sink.h"

#include <algorithm>

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
  if (!TakesManyRows()) return;
  feed_ =
      std::make_unique<RowFeed>(connection, table_name, JoinColumnNames(fields_), fields_.size());
  if (!feed_->IsReady()) feed_.reset();
}

// The rows of a source whose keys are not known yet. A row that is handed out counts as saved: it
// goes in, or the unique index holds its key already.
class RowSink::NewRows : public RowSource {
 public:
  NewRows(RowSink& sink, RowSource& rows) : sink_(sink), rows_(rows) {}

  const BoundValue* Next() override {
    ++asked_;
    while (const BoundValue* row = rows_.Next()) {
      if (sink_.Judge(row, false) != Novelty::kKnown) return row;
    }
    at_end_ = true;
    return nullptr;
  }
  bool at_end() const { return at_end_; }
  // How often a row was asked for.
  size_t asked() const { return asked_; }

 private:
  RowSink& sink_;
  RowSource& rows_;
  size_t asked_ = 0;
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

void RowSink::SaveAll(RowSource& rows) {
  if (feed_ == nullptr) {
    while (const BoundValue* row = rows.Next()) SaveRow(row);
    return;
  }
  NewRows new_rows(*this, rows);
  while (!new_rows.at_end()) {
    const size_t asked = new_rows.asked();
    if (feed_->Insert(new_rows) == SQLITE_DONE) continue;
    // The row that failed is dropped, or the next one if SQLite did not get as far as to ask for
    // it, and the others go on. What the result holds is not known.
    if (new_rows.asked() == asked) new_rows.Next();
    ForgetKeys();
  }
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
