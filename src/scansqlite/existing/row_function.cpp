#include "scansqlite/existing/row_function.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr char kName[] = "vexa_row";

bool HasBytes(const BoundValue& value) {
  return value.kind == kFieldText || value.kind == kFieldBlob;
}

BoundValue BorrowValue(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return BoundValue::Integer(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return BoundValue::Real(sqlite3_value_double(value));
    case SQLITE_TEXT: {
      const unsigned char* text = sqlite3_value_text(value);
      if (text == nullptr) return BoundValue::Text(nullptr, 0);
      return BoundValue::Text(text, std::strlen(reinterpret_cast<const char*>(text)));
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

}  // namespace

RowFunction::RowFunction(sqlite3* connection, TableFields& fields)
    : connection_(connection), fields_(fields), values_(fields.size()), bytes_(1) {
  // Schemas of the evidence must not call it.
  sqlite3_create_function(connection, kName, -1, SQLITE_UTF8 | SQLITE_DIRECTONLY, this, Run,
                          nullptr, nullptr);
}

RowFunction::~RowFunction() {
  sqlite3_create_function(connection_, kName, -1, SQLITE_UTF8, nullptr, nullptr, nullptr, nullptr);
}

std::string RowFunction::Call(const std::string& arguments) {
  return std::string(kName) + "(" + arguments + ")";
}

uint64_t RowFunction::TakeCalls() {
  const uint64_t calls = calls_;
  calls_ = 0;
  return calls;
}

void RowFunction::Run(sqlite3_context* context, int count, sqlite3_value** arguments) {
  static_cast<RowFunction*>(sqlite3_user_data(context))->Take(count, arguments);
}

void RowFunction::Take(int count, sqlite3_value** arguments) {
  ++calls_;
  bytes_size_ = 0;
  const size_t taken = std::min(static_cast<size_t>(count), values_.size());
  for (size_t i = 0; i < taken; ++i) {
    const BoundValue value = BorrowValue(arguments[i]);
    if (value.kind != kFieldNone) fields_[i].field_type = value.kind;
    if (HasBytes(value)) bytes_size_ += value.size;
    values_[i] = value;
  }
  KeepBytes();
}

void RowFunction::KeepBytes() {
  if (bytes_.size() < bytes_size_) bytes_.resize(2 * bytes_size_);
  uint8_t* at = bytes_.data();
  for (BoundValue& value : values_) {
    if (!HasBytes(value)) continue;
    if (value.size != 0) std::memcpy(at, value.bytes, value.size);
    value.bytes = at;
    at += value.size;
  }
}
