#include "common/sqlitecommon/raw_value.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "common/common/text_convert.h"
#include "common/sqlitecommon/big_endian.h"
#include "common/sqlitecommon/clean_text.h"

namespace {

struct LeadByte {
  uint32_t length;
  uint32_t bits;
  bool valid;
};

LeadByte ReadLeadByte(uint8_t byte) {
  if (byte < 0x80) return {1, byte, true};
  if (byte >= 0xC0 && byte <= 0xDF) return {2, byte & 0x1FU, true};
  if (byte >= 0xE0 && byte <= 0xEF) return {3, byte & 0x0FU, true};
  if (byte >= 0xF0 && byte <= 0xF7) return {4, byte & 0x07U, true};
  return {1, 0, false};
}

bool IsUnwantedCodePoint(uint32_t code_point) {
  return code_point <= 8 || (code_point >= 14 && code_point <= 31) ||
         (code_point >= 127 && code_point <= 159) || (code_point >= 0xFFF0 && code_point <= 0xFFFF);
}

}  // namespace

const RawValue* ValueAt(const std::vector<RawValue>& values, int32_t index) {
  if (index < 0 || static_cast<size_t>(index) >= values.size()) return nullptr;
  return &values[static_cast<size_t>(index)];
}

uint32_t Utf8SequenceLength(uint8_t lead) { return ReadLeadByte(lead).length; }

uint32_t Utf8BadSequenceLength(const uint8_t* bytes, uint32_t remaining) {
  const LeadByte lead = ReadLeadByte(bytes[0]);
  if (!lead.valid) return 1;
  if (remaining < lead.length) return remaining;
  uint32_t code_point = lead.bits;
  for (uint32_t i = 1; i < lead.length; ++i) {
    if ((bytes[i] & 0xC0U) != 0x80U) return lead.length;
    code_point = (code_point << 6) | (bytes[i] & 0x3FU);
  }
  return IsUnwantedCodePoint(code_point) ? lead.length : 0;
}

std::string RawValueAsText(std::vector<RawValue>& values, int32_t index) {
  const RawValue* value = ValueAt(values, index);
  if (value == nullptr || value->IsEmpty()) return {};
  uint8_t* bytes = value->bytes.get();
  const auto length = static_cast<uint32_t>(std::max(value->length, 0));
  if (IsCleanText(bytes, length)) return {reinterpret_cast<const char*>(bytes), length};
  uint32_t kept = 0;
  uint32_t at = 0;
  while (at < length) {
    const uint32_t bad = Utf8BadSequenceLength(bytes + at, length - at);
    if (bad != 0) {
      at += bad;
      continue;
    }
    const uint32_t good = ReadLeadByte(bytes[at]).length;
    if (kept != at) std::memmove(bytes + kept, bytes + at, good);
    kept += good;
    at += good;
  }
  return {reinterpret_cast<const char*>(bytes), kept};
}

int64_t BytesAsInteger(const uint8_t* bytes, uint32_t length) {
  if (length == 8) {
    return static_cast<int64_t>(uint64_t{BigEndian32(bytes[0], bytes[1], bytes[2], bytes[3])}
                                    << 32 |
                                BigEndian32(bytes[4], bytes[5], bytes[6], bytes[7]));
  }
  uint64_t number = (bytes[0] & 0x80U) != 0 ? ~uint64_t{0} : 0;
  for (uint32_t i = 0; i < length; ++i) number = (number << 8) + bytes[i];
  return static_cast<int64_t>(number);
}

double BytesAsReal(const uint8_t* b, uint32_t length) {
  switch (length) {
    case 1:
    case 2:
      return static_cast<double>(BytesAsInteger(b, length));
    case 4:
      return static_cast<double>(std::bit_cast<float>(BigEndian32(b[0], b[1], b[2], b[3])));
    case 8:
      return std::bit_cast<double>((uint64_t{BigEndian32(b[0], b[1], b[2], b[3])} << 32) |
                                   BigEndian32(b[4], b[5], b[6], b[7]));
    default:
      return 0.0;
  }
}

int64_t RawValueAsInteger(const std::vector<RawValue>& values, int32_t index) {
  const RawValue* value = ValueAt(values, index);
  if (value == nullptr || value->IsEmpty()) return 0;
  return BytesAsInteger(value->bytes.get(), static_cast<uint32_t>(std::max(value->length, 0)));
}

double RawValueAsReal(const std::vector<RawValue>& values, int32_t index) {
  const RawValue* value = ValueAt(values, index);
  if (value == nullptr || value->IsEmpty()) return 0.0;
  return BytesAsReal(value->bytes.get(), static_cast<uint32_t>(std::max(value->length, 0)));
}

std::string RawValueAsUtf16Text(const std::vector<RawValue>& values, int32_t index) {
  const RawValue* value = ValueAt(values, index);
  if (value == nullptr || value->IsEmpty()) return {};
  std::u16string units(static_cast<size_t>(value->length) / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<char16_t>(BigEndian16(value->bytes[2 * i + 1], value->bytes[2 * i]));
  }
  return WideToUtf8(units);
}
