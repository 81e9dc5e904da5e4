#include "scansqlite/carving/serial_type.h"

namespace {

constexpr uint64_t kSerialReal = 7;
constexpr uint64_t kSerialZero = 8;
constexpr uint64_t kSerialOne = 9;
constexpr uint64_t kFirstBlob = 12;
constexpr uint64_t kFirstText = 13;

void DecodeInteger(SerialTypeCell& cell, uint32_t payload_length) {
  cell.storage_class = kClassInteger;
  cell.payload_length = payload_length;
}

void DecodeConstant(SerialTypeCell& cell, uint32_t value) {
  DecodeInteger(cell, 0);
  cell.is_constant = true;
  cell.constant_value = value;
}

// The declared types that take numbers, and others only as the configuration admits them.
bool IsNumberAllowed(int32_t storage_class, int32_t candidate) {
  if (storage_class == kClassText) return candidate == kFieldText;
  if (storage_class == kClassBlob) return candidate == kFieldBlob;
  return true;
}

bool IsTextAllowed(int32_t storage_class, int32_t candidate) {
  if (storage_class == kClassInteger) return candidate == kFieldInteger;
  if (storage_class == kClassReal) return candidate == kFieldReal;
  return storage_class != kClassBlob || candidate == kFieldBlob;
}

bool IsBlobAllowed(int32_t storage_class, int32_t candidate) {
  if (storage_class == kClassInteger) return candidate == kFieldInteger;
  if (storage_class == kClassReal) return candidate == kFieldReal;
  return storage_class != kClassText || candidate == kFieldText;
}

// The field type code of a serial type; NULL and the reserved types count as integers.
int32_t FieldTypeOfSerial(uint64_t serial_type) {
  if (serial_type == kSerialReal) return kFieldReal;
  if (serial_type < kFirstBlob) return kFieldInteger;
  return serial_type % 2 == 0 ? kFieldBlob : kFieldText;
}

}  // namespace

void DecodeSerialType(SerialTypeCell& cell) {
  const uint64_t type = cell.serial_type;
  if (type == 0) {
    cell.storage_class = kClassNull;
    cell.is_null = true;
  } else if (type <= 4) {
    DecodeInteger(cell, static_cast<uint32_t>(type));
  } else if (type == 5) {
    DecodeInteger(cell, 6);
  } else if (type == 6) {
    DecodeInteger(cell, 8);
  } else if (type == kSerialReal) {
    cell.storage_class = kClassReal;
    cell.payload_length = 8;
  } else if (type == kSerialZero || type == kSerialOne) {
    DecodeConstant(cell, type == kSerialOne ? 1 : 0);
  } else if (type < kFirstBlob) {
    cell.storage_class = kClassUndecided;
  } else {
    const bool is_blob = type % 2 == 0;
    cell.storage_class = is_blob ? kClassBlob : kClassText;
    cell.payload_length = static_cast<uint32_t>((type - (is_blob ? kFirstBlob : kFirstText)) / 2);
  }
}

bool IsSerialAllowed(int32_t type_code, int32_t storage_class, int32_t field_type_candidate) {
  if (storage_class == kClassNull || storage_class == kClassUndecided) return true;
  if (static_cast<uint32_t>(type_code) > static_cast<uint32_t>(kTypeCodeConstraint)) return true;
  switch (type_code) {
    case 0:   // INTEGER
    case 1:   // FLOAT
    case 2:   // DOUBLE
    case 6:   // TIMESTAMP
    case 13:  // LONG
      return IsNumberAllowed(storage_class, field_type_candidate);
    case 3:  // TEXT
    case 5:  // VARCHAR
    case 7:  // STRING
      return IsTextAllowed(storage_class, field_type_candidate);
    case 4:  // BLOB
      return IsBlobAllowed(storage_class, field_type_candidate);
    case kTypeCodeConstraint:  // a placeholder of a virtual table holds no value
      return false;
    default:
      return true;
  }
}

bool MatchesFeature(const SerialTypeCells& cells, const FieldFeature& feature) {
  if (static_cast<uint32_t>(feature.column_index) >= cells.size()) return false;
  const SerialTypeCell& cell = cells[static_cast<size_t>(feature.column_index)];
  if (cell.is_null && (feature.is_not_null == 0 || feature.is_not_null == -1)) return true;
  const int32_t field_type = FieldTypeOfSerial(cell.serial_type);
  return field_type == feature.field_type || field_type == feature.field_type_candidate;
}

bool CheckFeatureClasses(const SerialTypeCells& cells, const FeatureMaps& features) {
  for (const FeatureMap& map : features) {
    for (const auto& [column, feature] : map) {
      if (!MatchesFeature(cells, feature)) return false;
    }
  }
  return true;
}
