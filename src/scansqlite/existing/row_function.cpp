#include "scansqlite/existing/row_function.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr char kName[] = "vexa_row";

bool HasBytes(const BoundValue& value) {
  return value.kind == kFieldText || value.kind == kFieldBlob;
}

}  // namespace

RowFunction::RowFunction(sqlite3* connection, TableFields& fields)
    : connection_(connection),
      fields_(fields),
      values_(fields.size()),
      kinds_(fields.size(), kFieldNone),
      bytes_(1) {
  // Schemas of the evidence must not call it.
  sqlite3_create_function(connection, kName, -1, SQLITE_UTF8 | SQLITE_DIRECTONLY, this, Run,
                          nullptr, nullptr);
}

RowFunction::~RowFunction() {
  for (size_t i = 0; i < kinds_.size(); ++i) {
    if (kinds_[i] != kFieldNone) fields_[i].field_type = kinds_[i];
  }
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
    values_[i] = TakeValue(arguments[i]);
    if (values_[i].kind != kFieldNone) kinds_[i] = values_[i].kind;
  }
}

BoundValue RowFunction::TakeValue(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return BoundValue::Integer(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return BoundValue::Real(sqlite3_value_double(value));
    case SQLITE_TEXT: {
      const unsigned char* text = sqlite3_value_text(value);
      const size_t size = text == nullptr ? 0 : std::strlen(reinterpret_cast<const char*>(text));
      return BoundValue::Text(Keep(text, size), size);
    }
    case SQLITE_BLOB: {
      const void* bytes = sqlite3_value_blob(value);
      const auto size = static_cast<size_t>(sqlite3_value_bytes(value));
      return BoundValue::Blob(Keep(bytes, size), size);
    }
    default:
      return BoundValue::Null();
  }
}

const uint8_t* RowFunction::Keep(const void* bytes, size_t size) {
  if (bytes_.size() - bytes_size_ < size) MakeRoom(size);
  uint8_t* const kept = bytes_.data() + bytes_size_;
  if (size != 0) std::memcpy(kept, bytes, size);
  bytes_size_ += size;
  return kept;
}

// The values taken before move along.
void RowFunction::MakeRoom(size_t size) {
  std::vector<uint8_t> larger(2 * (bytes_size_ + size));
  std::memcpy(larger.data(), bytes_.data(), bytes_size_);
  for (BoundValue& value : values_) {
    if (HasBytes(value)) value.bytes = larger.data() + (value.bytes - bytes_.data());
  }
  bytes_.swap(larger);
}
