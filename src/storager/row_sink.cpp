#include "storager/row_sink.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "storager/column_lists.h"

namespace {

// Bytes that the kind and length of a value take at most.
constexpr size_t kLongestHead = 6;

// The kind in two bits, the length in four and as many bytes as it takes.
uint8_t* PutHead(uint8_t* at, int32_t kind, uint32_t length) {
  uint32_t rest = length >> 4;
  *at++ =
      static_cast<uint8_t>(static_cast<uint32_t>(kind) << 5 | (length & 15U) << 1 | (rest != 0));
  while (rest != 0) {
    *at++ = static_cast<uint8_t>((rest & 0x7FU) << 1 | (rest >> 7 != 0));
    rest >>= 7;
  }
  return at;
}

// The bytes are put down eight at a time, with room behind them.
uint8_t* PutNumber(uint8_t* at, int32_t kind, uint64_t bits) {
  const auto size = static_cast<uint32_t>((std::bit_width(bits) + 7) / 8);
  at = PutHead(at, kind, size);
  std::memcpy(at, &bits, sizeof bits);
  return at + size;
}

uint8_t* PutBytes(uint8_t* at, const BoundValue& value) {
  at = PutHead(at, value.kind, value.size);
  if (value.size != 0) std::memcpy(at, value.bytes, value.size);
  return at + value.size;
}

bool IsNumber(const BoundValue& value) {
  return value.kind == kFieldInteger || value.kind == kFieldReal;
}

// A NULL equals no other, and so does what SQLite makes a NULL of.
bool BecomesNull(const BoundValue& value) {
  switch (value.kind) {
    case kFieldInteger:
    case kFieldText:
      return false;
    case kFieldReal:
      return std::isnan(value.real);
    case kFieldBlob:
      return value.size == 0;
    default:
      return true;
  }
}

// A declared type of more than a word can carry constraints of its own, so that a row which the
// unique index accepts is refused or takes another one's place.
bool HasPlainType(const TableFieldInfo& field) {
  return std::all_of(field.field_type_text.begin(), field.field_type_text.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  });
}

}  // namespace

RowSink::RowSink(const TableFields& fields, SqliteStatement& insert, SavedKeys* keys,
                 uint32_t table_number)
    : fields_(fields), insert_(insert), keys_(keys), table_number_(table_number) {
  for (uint32_t i = 0; i < fields.size(); ++i) {
    if (fields[i].is_unique_field != 0) unique_fields_.push_back(i);
  }
  has_plain_types_ = std::all_of(fields.begin(), fields.end(), HasPlainType);
  if (unique_fields_.empty() || !has_plain_types_) keys_ = nullptr;
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

  const BoundValue* Next() override {
    while (const BoundValue* row = rows_.Next()) {
      const bool has_key = sink_.keys_ != nullptr && sink_.MakeKey(row);
      if (has_key && !sink_.keys_->Add(sink_.key())) continue;
      return row;
    }
    at_end_ = true;
    return nullptr;
  }
  bool at_end() const { return at_end_; }

 private:
  RowSink& sink_;
  RowSource& rows_;
  bool at_end_ = false;
};

void RowSink::SaveAll(RowSource& rows) {
  if (feed_ == nullptr) {
    while (const BoundValue* row = rows.Next()) SaveRow(row);
    return;
  }
  NewRows new_rows(*this, rows);
  while (!new_rows.at_end()) {
    if (feed_->Insert(new_rows) == SQLITE_DONE) continue;
    // The row that failed is dropped, and the others go on. What the result holds is not known.
    if (keys_ != nullptr) keys_->GiveUp();
  }
}

bool RowSink::IsKnown(const BoundValue* values) {
  return keys_ != nullptr && MakeKey(values) && keys_->Contains(key());
}

// A key is short, since all keys are kept: each value has its kind and its length in front, and a
// number only the bytes that it needs. Equal keys are the same kinds with the same bytes.
bool RowSink::MakeKey(const BoundValue* values) {
  size_t room = kLongestHead;
  for (const uint32_t field : unique_fields_) {
    const BoundValue& value = values[field];
    if (BecomesNull(value)) return false;
    room += kLongestHead + (IsNumber(value) ? sizeof value.integer : value.size);
  }
  if (key_.size() < room) key_.resize(room);
  uint8_t* at = PutHead(key_.data(), 0, table_number_);
  for (const uint32_t field : unique_fields_) {
    const BoundValue& value = values[field];
    if (value.kind == kFieldInteger) {
      // The sign goes into the lowest bit, so that numbers just below 0 are short, too.
      const auto bits = static_cast<uint64_t>(value.integer);
      at = PutNumber(at, kFieldInteger, bits << 1 ^ static_cast<uint64_t>(value.integer >> 63));
    } else if (value.kind == kFieldReal) {
      at = PutNumber(at, kFieldReal, std::bit_cast<uint64_t>(value.real));
    } else {
      at = PutBytes(at, value);
    }
  }
  key_size_ = static_cast<size_t>(at - key_.data());
  return true;
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

void RowSink::SaveRow(const BoundValue* values) {
  if (insert_.handle() == nullptr) return;
  const bool has_key = keys_ != nullptr && MakeKey(values);
  if (has_key && keys_->Contains(key())) return;
  for (size_t i = 0; i < fields_.size(); ++i) Bind(static_cast<int>(i) + 1, values[i]);
  const int result = insert_.Step();
  insert_.Reset();
  if (result != SQLITE_DONE && result != SQLITE_CONSTRAINT) {
    // A full disk can undo the whole transaction, rows that were saved long ago among them.
    if (keys_ != nullptr) keys_->GiveUp();
    return;
  }
  if (has_key && result == SQLITE_DONE) keys_->Add(key());
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
