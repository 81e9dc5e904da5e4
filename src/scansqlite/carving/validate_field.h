#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/serial_type.h"
#include "scansqlite/init/db_header.h"
#include "scansqlite/schema/table_schema.h"

// The text of a carved value in UTF-8. UTF-8 text is cleaned in the value's own buffer; any other
// encoding is read as little-endian UTF-16, which throws on an unpaired surrogate.
std::string CarvedText(std::vector<RawValue>& values, int32_t index, uint32_t text_encoding);

// Whether one value looks like what the configuration says, judged as `field_type`. A code outside
// the list accepts everything, kFieldNone nothing. Reading a text changes the value's bytes.
bool ValidateField(int32_t field_type, const FieldFeature& feature, uint32_t text_encoding,
                   const SerialTypeCells& cells, std::vector<RawValue>& values);

// Whether every entry of every map passes as one of its two codes. The features of all layouts
// count, by the column that each has there.
bool ValidateRecord(const FeatureMaps& features, uint32_t text_encoding,
                    const SerialTypeCells& cells, std::vector<RawValue>& values);
