#pragma once

#include <cstdint>
#include <string>

#include "support/dice.h"

namespace differential {

// What the values of a column are like.
enum class Kind {
  kKey,      // the row id alias, NULL in the record
  kSmall,    // 0 to 300
  kInteger,  // any width
  kDate,     // milliseconds, six bytes
  kFlag,     // 0 and 1
  kReal,
  kText,
  kPhone,
  kDirty,  // texts with control characters, specials and broken sequences
  kLong,   // texts longer than a page now and then
  kBlob,
  kNull,
  kAny,
};

// One value as it stands in a record.
struct Value {
  uint64_t serial_type = 0;
  std::string bytes;
};

// A random value; NULL now and then for kinds that are no key.
Value RandomValue(Dice& dice, Kind kind, int null_percent = 15);

// Text of `length` bytes or few more: words, several scripts.
std::string RandomText(Dice& dice, size_t length);

// Text that a cleaning changes.
std::string DirtyText(Dice& dice, size_t length);

// The value as an SQL literal. A text goes in byte for byte in a UTF-8 database.
std::string ToSql(const Value& value);

// A varint of `value` with up to `padding` bytes of 0x80 in front.
std::string Varint(uint64_t value, size_t padding = 0);

}  // namespace differential
