#pragma once

#include <vector>

#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/carved_record.h"
#include "scansqlite/schema/table_schema.h"
#include "storager/row_value.h"

// Maps the values of a carved record onto the result columns. False when a result field has an
// unknown type: the row is then dropped.
bool BuildCarvedRow(std::vector<RawValue>& values, const CarvedRecord& record,
                    const ResultFieldMap& result_fields, uint32_t text_encoding, RowValue& row);
