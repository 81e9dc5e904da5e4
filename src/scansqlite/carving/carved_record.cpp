#include "scansqlite/carving/carved_record.h"

namespace {

uint32_t VarintLength(uint64_t value) {
  uint32_t length = 1;
  while ((value >>= 7) != 0 && length < 9) ++length;
  return length;
}

// The header counts its own length varint, so the size is the smallest that agrees with itself.
uint32_t HeaderSizeFor(uint32_t serial_bytes) {
  uint32_t length = 1;
  while (length < 9 && VarintLength(uint64_t{serial_bytes} + length) != length) ++length;
  return serial_bytes + length;
}

}  // namespace

void MeasureSizes(CarvedRecord& record) {
  record.header_size = HeaderSizeFor(record.serial_bytes);
  record.payload_size = record.header_size + record.data_bytes;
}

CarvedRecord MeasureRecord(const SerialTypeCells& cells) {
  CarvedRecord record;
  for (const SerialTypeCell& cell : cells) {
    record.serial_bytes += cell.header_bytes;
    record.data_bytes += cell.payload_length;
  }
  MeasureSizes(record);
  return record;
}

bool MeasureLocalPayload(const DbHeaderInfo& header, CarvedRecord& record) {
  const uint32_t minimum = header.table_min_local;
  const uint32_t unit = uint32_t{header.page_size} - uint32_t{header.reserved_size} - 4U;
  if (unit == 0) return false;
  const uint32_t wanted = minimum + (record.payload_size - minimum) % unit;
  record.local_size = wanted <= header.table_max_leaf ? wanted : minimum;
  return true;
}
