#include "storager/row_key.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

namespace {

// Bytes that the kind and length of a value take at most.
constexpr size_t kLongestHead = 6;
constexpr size_t kLongestNumber = 1 + sizeof(uint64_t);

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

// The bytes that are needed, put down all eight at a time, with room behind them.
uint8_t* PutNumber(uint8_t* at, int32_t kind, uint64_t bits) {
  const auto size = static_cast<uint32_t>((std::bit_width(bits) + 7) / 8);
  *at = static_cast<uint8_t>(static_cast<uint32_t>(kind) << 5 | size << 1);
  std::memcpy(at + 1, &bits, sizeof bits);
  return at + 1 + size;
}

// The sign goes into the lowest bit, so that numbers just below 0 are short, too.
uint8_t* PutInteger(uint8_t* at, int64_t number) {
  const auto bits = static_cast<uint64_t>(number);
  return PutNumber(at, kFieldInteger, bits << 1 ^ static_cast<uint64_t>(number >> 63));
}

// A whole number as the integer that equals it, where a column keeps both as numbers.
uint8_t* PutReal(uint8_t* at, double real, bool stays_number) {
  constexpr double kLimit = 9223372036854775808.0;
  const bool is_whole = real >= -kLimit && real < kLimit && real == std::trunc(real);
  if (is_whole && stays_number) return PutInteger(at, static_cast<int64_t>(real));
  return PutNumber(at, kFieldReal, std::bit_cast<uint64_t>(real));
}

constexpr uint32_t BitOf(int32_t kind) { return 1U << static_cast<uint32_t>(kind); }

// The kinds that a column of the declared type stores as they are, so that values are equal only if
// they are the same.
// https://www.sqlite.org/datatype3.html#determination_of_column_affinity
uint32_t ExactKinds(std::string type) {
  std::transform(type.begin(), type.end(), type.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  const auto has = [&type](const char* word) { return type.find(word) != std::string::npos; };
  constexpr uint32_t kBlob = BitOf(kFieldBlob);
  constexpr uint32_t kNumbers = BitOf(kFieldInteger) | BitOf(kFieldReal);
  if (has("INT")) return kBlob | kNumbers;
  if (has("CHAR") || has("CLOB") || has("TEXT")) return kBlob | BitOf(kFieldText);
  if (has("BLOB") || type.empty()) return kBlob | kNumbers | BitOf(kFieldText);
  if (has("REAL") || has("FLOA") || has("DOUB")) return kBlob | BitOf(kFieldReal);
  return kBlob | kNumbers;
}

}  // namespace

RowKey::RowKey(const TableFields& fields, uint32_t table_number) {
  for (uint32_t i = 0; i < fields.size(); ++i) {
    if (fields[i].is_unique_field == 0) continue;
    fields_.push_back(i);
    exact_kinds_.push_back(ExactKinds(fields[i].field_type_text));
  }
  numbers_room_ = fields_.size() * std::max(kLongestNumber, kLongestHead);
  bytes_.resize(kLongestHead + numbers_room_ + sizeof(uint64_t));
  first_ = static_cast<size_t>(PutHead(bytes_.data(), 0, table_number) - bytes_.data());
}

// A key is short, since all keys are kept: each value has its kind and its length in front, and a
// number only the bytes that it needs. Equal keys are the same kinds with the same bytes.
bool RowKey::Make(const BoundValue* values) {
  uint8_t* at = bytes_.data() + first_;
  uint32_t exact = 1;
  for (size_t i = 0; i < fields_.size(); ++i) {
    const BoundValue& value = values[fields_[i]];
    switch (value.kind) {
      case kFieldInteger:
        at = PutInteger(at, value.integer);
        break;
      case kFieldReal:
        if (std::isnan(value.real)) return false;
        at = PutReal(at, value.real, (exact_kinds_[i] & BitOf(kFieldReal)) != 0);
        break;
      case kFieldText:
        at = PutBytes(at, value);
        break;
      case kFieldBlob:
        if (value.size == 0) return false;
        at = PutBytes(at, value);
        break;
      default:
        return false;
    }
    exact &= exact_kinds_[i] >> static_cast<uint32_t>(value.kind);
  }
  is_exact_ = exact != 0;
  size_ = static_cast<size_t>(at - bytes_.data());
  return true;
}

// Behind the bytes there stays room for the heads and numbers that may follow.
uint8_t* RowKey::PutBytes(uint8_t* at, const BoundValue& value) {
  const auto used = static_cast<size_t>(at - bytes_.data());
  const size_t room = used + value.size + numbers_room_ + sizeof(uint64_t);
  if (bytes_.size() < room) {
    bytes_.resize(2 * room);
    at = bytes_.data() + used;
  }
  at = PutHead(at, value.kind, value.size);
  if (value.size != 0) std::memcpy(at, value.bytes, value.size);
  return at + value.size;
}
