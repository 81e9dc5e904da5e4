#include "scansqlite/carving/value_check.h"

#include <cstring>

#include "common/sqlitecommon/raw_value.h"

namespace {

constexpr uint64_t kTopBits = 0x8080808080808080U;
constexpr uint64_t kEachByte = 0x0101010101010101U;

// Eight bytes of printable ASCII, tab to carriage return not among them.
bool ArePrintable(const uint8_t* bytes) {
  uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  const uint64_t below_blank = word - kEachByte * 0x20;  // borrows only where a byte is below
  const uint64_t above_tilde = word + kEachByte;         // reaches the top bit from 0x7F on
  return ((word | below_blank | above_tilde) & kTopBits) == 0;
}

// The same of so many bytes; written for the compiler to use vectors.
constexpr uint32_t kPrintableBlock = 32;
bool IsPrintableBlock(const uint8_t* bytes) {
  uint8_t others = 0;
  for (uint32_t i = 0; i < kPrintableBlock; ++i) {
    others |= static_cast<uint8_t>(bytes[i] - 0x20) > 0x5E ? 1 : 0;
  }
  return others == 0;
}

// The length of a sequence of two to four bytes that is surely clean; 0 leaves the answer open.
uint32_t CleanSequence(const uint8_t* bytes, uint32_t left) {
  constexpr uint32_t kLastControl = 0x9F;
  constexpr uint32_t kFirstSpecial = 0xFFF0;
  constexpr uint32_t kLastSpecial = 0xFFFF;
  const uint32_t lead = bytes[0];
  const auto follows = [bytes](uint32_t i) { return (bytes[i] & 0xC0U) == 0x80U; };
  const auto bits = [bytes](uint32_t i) { return bytes[i] & 0x3FU; };
  if ((lead & 0xE0U) == 0xC0U && left >= 2) {
    return follows(1) && ((lead & 0x1FU) << 6 | bits(1)) > kLastControl ? 2 : 0;
  }
  if ((lead & 0xF0U) == 0xE0U && left >= 3) {
    const uint32_t point = (lead & 0x0FU) << 12 | bits(1) << 6 | bits(2);
    return follows(1) && follows(2) && point > kLastControl && point < kFirstSpecial ? 3 : 0;
  }
  if ((lead & 0xF8U) == 0xF0U && left >= 4) {
    const uint32_t point = (lead & 0x07U) << 18 | bits(1) << 12;
    return follows(1) && follows(2) && follows(3) && point > kLastSpecial ? 4 : 0;
  }
  return 0;
}

bool IsNull(const RecordValue& value) { return value.serial_type == 0; }

Verdict VerdictOf(bool passes) { return passes ? Verdict::kHit : Verdict::kMiss; }

bool CheckInteger(const FieldFeature& feature, const RecordValue& value) {
  if (IsNull(value)) return feature.is_not_null != 1;
  const int64_t number = value.length == 0 ? 0 : BytesAsInteger(value.bytes, value.length);
  for (const ValueRange& range : feature.value_ranges) {
    if (range.min > number || number > range.max) return false;
  }
  return true;
}

bool CheckReal(const FieldFeature& feature, const RecordValue& value) {
  if (IsNull(value)) return feature.is_not_null != 1;
  const double number = value.length == 0 ? 0.0 : BytesAsReal(value.bytes, value.length);
  for (const ValueRange& range : feature.value_ranges) {
    if (!(number >= static_cast<double>(range.min))) return false;
    if (number > static_cast<double>(range.max)) return false;
  }
  return true;
}

bool LengthFits(const FieldFeature& feature, uint64_t length) {
  for (const ValueRange& range : feature.value_ranges) {
    if (length < static_cast<uint64_t>(range.min) || length > static_cast<uint64_t>(range.max)) {
      return false;
    }
  }
  return true;
}

bool BytesFit(const ValueCheck& check, const RecordValue& value) {
  if (check.refused_bytes.empty()) return true;
  uint32_t refused = 0;
  for (uint32_t i = 0; i < value.length; ++i) refused |= check.refused_bytes[value.bytes[i]];
  return refused == 0;
}

Verdict CheckText(const ValueCheck& check, const RecordValue& value) {
  const FieldFeature& feature = *check.feature;
  if (value.length == 0 || IsConstant(value)) return VerdictOf(feature.is_not_null != 1);
  if (!IsCleanText(value.bytes, value.length)) return Verdict::kOpen;
  return VerdictOf(LengthFits(feature, value.length) && BytesFit(check, value));
}

bool CheckBlob(const ValueCheck& check, const RecordValue& value) {
  const FieldFeature& feature = *check.feature;
  if (value.length == 0 && feature.is_not_null == 1) return false;
  return LengthFits(feature, value.length) && BytesFit(check, value);
}

Verdict CheckAs(int32_t field_type, const ValueCheck& check, const RecordValue& value) {
  const FieldFeature& feature = *check.feature;
  switch (field_type) {
    case kFieldNone:
      return Verdict::kMiss;
    case kFieldInteger:
      return VerdictOf(CheckInteger(feature, value));
    case kFieldReal:
      return VerdictOf(CheckReal(feature, value));
    case kFieldText:
      return CheckText(check, value);
    case kFieldBlob:
      return VerdictOf(CheckBlob(check, value));
    default:
      return Verdict::kHit;
  }
}

}  // namespace

bool IsCleanText(const uint8_t* bytes, uint32_t length) {
  uint32_t at = 0;
  while (at < length) {
    if (at + kPrintableBlock <= length && IsPrintableBlock(bytes + at)) {
      at += kPrintableBlock;
    } else if (at + 8 <= length && ArePrintable(bytes + at)) {
      at += 8;
    } else if (at + 8 > length && length >= 8 && ArePrintable(bytes + length - 8)) {
      return true;
    } else if (bytes[at] >= 0x20 && bytes[at] < 0x7F) {
      ++at;
    } else if (const uint32_t clean = CleanSequence(bytes + at, length - at); clean != 0) {
      at += clean;
    } else if (Utf8BadSequenceLength(bytes + at, length - at) != 0) {
      return false;
    } else {
      at += Utf8SequenceLength(bytes[at]);
    }
  }
  return true;
}

Verdict CheckValue(const ValueCheck& check, const RecordValue& value) {
  const Verdict first = CheckAs(check.feature->field_type, check, value);
  if (first != Verdict::kMiss) return first;
  return CheckAs(check.feature->field_type_candidate, check, value);
}
