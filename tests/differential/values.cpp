#include "differential/values.h"

#include <cstring>

namespace differential {

namespace {

constexpr const char* kHexDigits = "0123456789abcdef";

Value IntegerValue(Dice& dice, int64_t number) {
  if ((number == 0 || number == 1) && dice.Chance(70)) {
    return {number == 0 ? 8U : 9U, {}};
  }
  size_t bytes = 1;
  while (bytes < 8 &&
         (number < -(int64_t{1} << (8 * bytes - 1)) || number >= int64_t{1} << (8 * bytes - 1))) {
    bytes = bytes == 4 ? 6 : bytes == 6 ? 8 : bytes + 1;
  }
  Value value;
  value.serial_type = bytes == 8 ? 6 : bytes == 6 ? 5 : bytes;
  for (size_t i = bytes; i-- > 0;) {
    value.bytes += static_cast<char>(static_cast<uint64_t>(number) >> (8 * i));
  }
  return value;
}

Value RealValue(double number) {
  uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  Value value{7, {}};
  for (size_t i = 8; i-- > 0;) value.bytes += static_cast<char>(bits >> (8 * i));
  return value;
}

Value TextValue(const std::string& text) { return {13 + 2 * text.size(), text}; }

Value BlobValue(const std::string& bytes) { return {12 + 2 * bytes.size(), bytes}; }

std::string RandomBytes(Dice& dice, size_t length) {
  std::string bytes;
  for (size_t i = 0; i < length; ++i) bytes += dice.Byte();
  return bytes;
}

size_t RandomLength(Dice& dice) {
  if (dice.Chance(10)) return dice.Below(400);
  return dice.Chance(40) ? dice.Below(80) : dice.Below(12);
}

}  // namespace

std::string RandomText(Dice& dice, size_t length) {
  std::string text;
  while (text.size() < length) {
    if (dice.Chance(80)) {
      text += static_cast<char>(dice.Chance(15) ? ' ' : 'a' + dice.Below(26));
    } else {
      text += dice.Pick({"é", "ß", "я", "中", "あ", "😀", "\t", "0", "7", "+", "Z"});
    }
  }
  return text;
}

std::string DirtyText(Dice& dice, size_t length) {
  std::string text = RandomText(dice, length);
  for (size_t i = 0; i < 1 + dice.Below(3); ++i) {
    const std::string piece = dice.Pick({"\x01", "\x1F", "\xEF\xBF\xBC", "\xC2\x80", "\xFF",
                                         "\xE4\xB8", "\x7F", "\xEF\xBF\xBD", "\x0B", "\xF8"});
    text.insert(dice.Below(text.size() + 1), piece);
  }
  return text;
}

Value RandomValue(Dice& dice, Kind kind, int null_percent) {
  if (kind != Kind::kKey && dice.Chance(null_percent)) return {};
  switch (kind) {
    case Kind::kKey:
    case Kind::kNull:
      return {};
    case Kind::kSmall:
      return IntegerValue(dice, dice.Between(0, 300));
    case Kind::kInteger:
      return IntegerValue(dice, static_cast<int64_t>(dice.Word()) >> dice.Below(63));
    case Kind::kDate:
      return IntegerValue(dice, dice.Between(1400000000000, 1700000000000));
    case Kind::kFlag:
      return IntegerValue(dice, dice.Between(0, 1));
    case Kind::kReal:
      return RealValue(static_cast<double>(dice.Between(-1000000, 1000000)) / 16.0);
    case Kind::kText:
      return TextValue(RandomText(dice, RandomLength(dice)));
    case Kind::kPhone:
      return TextValue("+49" + std::to_string(dice.Between(1000000, 99999999)));
    case Kind::kDirty:
      return TextValue(dice.Chance(50) ? DirtyText(dice, RandomLength(dice))
                                       : RandomText(dice, RandomLength(dice)));
    case Kind::kLong:
      return TextValue(RandomText(dice, dice.Chance(30) ? dice.Below(6000) : dice.Below(60)));
    case Kind::kBlob:
      return BlobValue(RandomBytes(dice, RandomLength(dice)));
    case Kind::kAny:
      return RandomValue(dice,
                         dice.Pick({Kind::kSmall, Kind::kInteger, Kind::kReal, Kind::kText,
                                    Kind::kDirty, Kind::kBlob, Kind::kNull, Kind::kFlag}),
                         0);
  }
  return {};
}

std::string ToSql(const Value& value) {
  if (value.serial_type == 0) return "NULL";
  if (value.serial_type == 8) return "0";
  if (value.serial_type == 9) return "1";
  if (value.serial_type == 7) {
    uint64_t bits = 0;
    for (const char byte : value.bytes) bits = bits << 8 | static_cast<uint8_t>(byte);
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return std::to_string(number);
  }
  if (value.serial_type < 12) {
    uint64_t number = (static_cast<uint8_t>(value.bytes[0]) & 0x80U) != 0 ? ~uint64_t{0} : 0;
    for (const char byte : value.bytes) number = number << 8 | static_cast<uint8_t>(byte);
    return std::to_string(static_cast<int64_t>(number));
  }
  std::string hex = "x'";
  for (const char byte : value.bytes) {
    hex += kHexDigits[static_cast<uint8_t>(byte) >> 4];
    hex += kHexDigits[static_cast<uint8_t>(byte) & 15U];
  }
  hex += "'";
  return value.serial_type % 2 == 0 ? hex : "CAST(" + hex + " AS TEXT)";
}

std::string Varint(uint64_t value, size_t padding) {
  std::string bytes(1, static_cast<char>(value & 0x7FU));
  while ((value >>= 7) != 0) bytes.insert(0, 1, static_cast<char>(0x80U | (value & 0x7FU)));
  return std::string(padding, '\x80') + bytes;
}

}  // namespace differential
