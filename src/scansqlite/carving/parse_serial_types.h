#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "common/sqlitecommon/log_file.h"
#include "common/sqlitecommon/reverse_varint.h"
#include "scansqlite/carving/carve_layout.h"

// Reads a varint forward from `position`, which moves behind it; it ends at the source's end, too.
// Every byte gives 7 bits, the ninth like the others, so that a nine-byte varint is another number
// here than in SQLite. Gives how many bytes it took.
template <typename Source>
uint32_t ReadVarintForward(Source& source, uint64_t& position, uint64_t& value) {
  const uint64_t size = SourceSize(source);
  uint32_t count = 0;
  bool goes_on = true;
  value = 0;
  while (goes_on) {
    const uint8_t byte = source.ReadByte(position);
    value = (value << 7) + (byte & 0x7FU);
    ++count;
    ++position;
    goes_on = (byte & 0x80U) != 0 && count < 9 && position < size;
  }
  return count;
}

// Reads serial types from `position` until `count` more cells were added; true when they were.
// False at the source's end, and at the first serial type that its column does not admit.
template <typename Source>
bool ParseSerialTypes(Source& source, uint64_t position, size_t count,
                      const std::vector<ColumnRule>& columns, SerialTypeCells& cells) {
  const size_t target = cells.size() + count;
  if (count == 0) return true;
  const uint64_t size = SourceSize(source);
  while (position < size) {
    SerialTypeCell cell;
    cell.header_bytes = ReadVarintForward(source, position, cell.serial_type);
    DecodeSerialType(cell);
    if (!ColumnAllows(columns[cells.size()], cell.storage_class)) return false;
    cells.push_back(cell);
    if (cells.size() >= target) return true;
  }
  return false;
}
