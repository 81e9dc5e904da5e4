#pragma once

#include <cstdint>

#include "scansqlite/carving/serial_type.h"
#include "scansqlite/init/db_header.h"

// The measures of one candidate record.
struct CarvedRecord {
  bool has_row_id = false;  // the cell head was found
  int64_t row_id = 0;
  uint32_t payload_size = 0;
  uint32_t header_size = 0;   // its own varint included
  uint32_t serial_bytes = 0;  // sum of the serial types' bytes
  uint32_t data_bytes = 0;    // sum of the values' bytes
  uint32_t local_size = 0;    // payload bytes on the page
};

// What a carved row knows of its row id.
struct RowIdHint {
  bool has_row_id = false;
  int64_t row_id = 0;
};

// Sets `header_size` and `payload_size` from the sums of the record.
void MeasureSizes(CarvedRecord& record);

// The measures that follow from the cells alone; `local_size` stays 0.
CarvedRecord MeasureRecord(const SerialTypeCells& cells);

// Sets `local_size` of a record that does not fit its page, by SQLite's rule. False when the
// page's geometry leaves no room to reckon with.
// https://www.sqlite.org/fileformat2.html#cell_payload_overflow_pages
bool MeasureLocalPayload(const DbHeaderInfo& header, CarvedRecord& record);
