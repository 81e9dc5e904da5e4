// The record format of SQLite: the length of the header, a serial type for each column, then the
// values. Integers take the shortest of 1, 2, 3, 4, 6 and 8 bytes, and 0 and 1 none at all.
#include "recovery/record_bytes.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>

#include "common/common/text_convert.h"

namespace recovery {
namespace {

struct Encoded {
  uint64_t serial_type = 0;
  std::string bytes;
};

std::string BigEndian(uint64_t value, int width) {
  std::string bytes;
  for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(value >> static_cast<unsigned>(shift));
  }
  return bytes;
}

Encoded EncodeInteger(int64_t value) {
  if (value == 0 || value == 1) return {value == 0 ? 8U : 9U, {}};
  const uint64_t size = static_cast<uint64_t>(value < 0 ? ~value : value);
  const auto bits = static_cast<uint64_t>(value);
  if (size <= 0x7F) return {1, BigEndian(bits, 1)};
  if (size <= 0x7FFF) return {2, BigEndian(bits, 2)};
  if (size <= 0x7FFFFF) return {3, BigEndian(bits, 3)};
  if (size <= 0x7FFFFFFF) return {4, BigEndian(bits, 4)};
  if (size <= 0x7FFFFFFFFFFF) return {5, BigEndian(bits, 6)};
  return {6, BigEndian(bits, 8)};
}

// A column of real affinity holds whole numbers as integers, unless they would take 8 bytes.
Encoded EncodeReal(double value, bool real_affinity) {
  if (real_affinity && std::abs(value) < 0x1.0p47 && std::trunc(value) == value) {
    return EncodeInteger(static_cast<int64_t>(value));
  }
  return {7, BigEndian(std::bit_cast<uint64_t>(value), 8)};
}

std::string EncodeText(const std::string& text, TextEncoding encoding) {
  if (encoding == TextEncoding::kUtf8) return text;
  std::string bytes;
  for (const char16_t unit : Utf8ToWide(text)) {
    const auto high = static_cast<char>(unit >> 8U);
    const auto low = static_cast<char>(unit & 0xFFU);
    bytes += encoding == TextEncoding::kUtf16le ? low : high;
    bytes += encoding == TextEncoding::kUtf16le ? high : low;
  }
  return bytes;
}

Encoded Encode(const Column& column, const Value& value, TextEncoding encoding) {
  if (const auto* integer = std::get_if<int64_t>(&value)) return EncodeInteger(*integer);
  if (const auto* real = std::get_if<double>(&value)) {
    return EncodeReal(*real, HasRealAffinity(column.declared_type));
  }
  if (const auto* text = std::get_if<std::string>(&value)) {
    std::string bytes = EncodeText(*text, encoding);
    return {13 + 2 * bytes.size(), std::move(bytes)};
  }
  if (const auto* blob = std::get_if<Blob>(&value)) {
    return {12 + 2 * blob->bytes.size(), blob->bytes};
  }
  return {};
}

}  // namespace

bool HasRealAffinity(const std::string& declared_type) {
  std::string type = declared_type;
  std::transform(type.begin(), type.end(), type.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  for (const char* word : {"INT", "CHAR", "CLOB", "TEXT", "BLOB"}) {
    if (type.find(word) != std::string::npos) return false;
  }
  return type.find("REAL") != std::string::npos || type.find("FLOA") != std::string::npos ||
         type.find("DOUB") != std::string::npos;
}

std::string Varint(uint64_t value) {
  std::string bytes;
  if (value >= uint64_t{1} << 56U) {
    bytes = static_cast<char>(value & 0xFFU);  // the ninth byte holds eight bits
    value >>= 8U;
    for (int i = 0; i < 8; ++i, value >>= 7U) {
      bytes.insert(bytes.begin(), static_cast<char>((value & 0x7FU) | 0x80U));
    }
    return bytes;
  }
  bytes = static_cast<char>(value & 0x7FU);
  for (value >>= 7U; value != 0; value >>= 7U) {
    bytes.insert(bytes.begin(), static_cast<char>((value & 0x7FU) | 0x80U));
  }
  return bytes;
}

RecordBytes EncodeRecord(const Layout& layout, const Row& row, TextEncoding encoding) {
  std::string types;
  std::string body;
  for (size_t i = 0; i < row.size(); ++i) {
    const Encoded value =
        layout.alias == i ? Encoded{} : Encode(layout.columns[i], row[i], encoding);
    types += Varint(value.serial_type);
    body += value.bytes;
  }
  size_t header = types.size() + 1;
  while (Varint(header).size() + types.size() > header) ++header;
  RecordBytes record;
  record.skipped = Varint(header).size() + (layout.alias == size_t{0} ? 1 : 0);
  record.payload = Varint(header) + types + body;
  return record;
}

size_t LocalPayload(size_t payload, size_t page_size) {
  const size_t most = page_size - 35;
  if (payload <= most) return payload;
  const size_t least = (page_size - 12) * 32 / 255 - 23;
  const size_t wanted = least + (payload - least) % (page_size - 4);
  return wanted <= most ? wanted : least;
}

}  // namespace recovery
