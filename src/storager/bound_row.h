#pragma once

#include <cstdint>
#include <vector>

#include "sqliteconfig/config_records.h"

// One value on its way into an insert statement. Texts and blobs are borrowed.
struct BoundValue {
  int32_t kind = kFieldNone;  // a field type code; kFieldNone is NULL
  uint32_t size = 0;          // bytes of a text or blob
  union {
    int64_t integer;
    double real;
    const uint8_t* bytes;
  };

  BoundValue() : integer(0) {}
  static BoundValue Null() { return {}; }
  static BoundValue Integer(int64_t number) {
    BoundValue value;
    value.kind = kFieldInteger;
    value.integer = number;
    return value;
  }
  static BoundValue Real(double number) {
    BoundValue value;
    value.kind = kFieldReal;
    value.real = number;
    return value;
  }
  static BoundValue Text(const uint8_t* bytes, size_t size) {
    return Bytes(kFieldText, bytes, size);
  }
  static BoundValue Blob(const uint8_t* bytes, size_t size) {
    return Bytes(kFieldBlob, bytes, size);
  }

 private:
  static BoundValue Bytes(int32_t kind, const uint8_t* bytes, size_t size) {
    BoundValue value;
    value.kind = kind;
    value.size = static_cast<uint32_t>(size);
    value.bytes = bytes;
    return value;
  }
};
