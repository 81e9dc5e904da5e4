#pragma once

#include <cstdint>

#include "scansqlite/carving/record_test.h"

// HOT CODE. The checks of validate_field.h on values that stay where they are.

// A constant as a value is one byte, 0 or 1, which a reading as text cleans away.
inline bool IsConstant(const RecordValue& value) {
  return value.serial_type == 8 || value.serial_type == 9;
}

// Whether the value passes as one of the feature's two codes. kOpen when that takes a cleaned text.
Verdict CheckValue(const ValueCheck& check, const RecordValue& value);
