#pragma once

#include <cstdint>
#include <vector>

#include "scansqlite/schema/table_schema.h"

// Storage classes of a decoded serial type. They are not the field type codes of the configuration
// (0 integer, 1 real, 2 text, 3 blob).
inline constexpr int32_t kClassNull = -2;
inline constexpr int32_t kClassUndecided = -1;  // reserved serial types, and constants as values
inline constexpr int32_t kClassInteger = 0;
inline constexpr int32_t kClassReal = 2;
inline constexpr int32_t kClassText = 3;
inline constexpr int32_t kClassBlob = 4;

// One serial type of a record header.
// https://www.sqlite.org/fileformat2.html#record_format
//
//   serial type  value                             bytes in the body
//             0  NULL                              0
//        1 to 4  big-endian integer                the serial type
//          5, 6  big-endian integer                6, 8
//             7  IEEE 754 double                   8
//          8, 9  the constants 0 and 1             0
//        10, 11  reserved                          0
//   even >= 12   blob                              (n - 12) / 2
//   odd  >= 13   text                              (n - 13) / 2
struct SerialTypeCell {
  uint32_t header_bytes = 0;  // bytes that the varint took
  uint64_t serial_type = 0;
  int32_t storage_class = kClassUndecided;
  bool is_null = false;      // serial type 0 only
  bool is_constant = false;  // serial types 8 and 9
  uint32_t payload_length = 0;
  uint32_t constant_value = 0;
};

using SerialTypeCells = std::vector<SerialTypeCell>;

// Fills the rest of a cell whose `serial_type` is set.
void DecodeSerialType(SerialTypeCell& cell);

// Whether a column of the declared type may hold the storage class. NULL and the reserved serial
// types always pass. `field_type_candidate` (a field type code) admits a class that the declared
// type would refuse.
bool IsSerialAllowed(int32_t type_code, int32_t storage_class, int32_t field_type_candidate);

// Whether the cell that the feature is about agrees with its classes; false when there is none.
bool MatchesFeature(const SerialTypeCells& cells, const FieldFeature& feature);

// Whether the cells agree with the classes that the features of every layout ask for.
bool CheckFeatureClasses(const SerialTypeCells& cells, const FeatureMaps& features);
