#pragma once

#include <cstdint>

#include "common/sqlitecommon/reverse_varint.h"
#include "scansqlite/carving/carved_record.h"

// Tests whether three varints, read downward from the byte in front of the serial types, are the
// head of a cell that holds this record, and takes the row id if so:
//   payload size | row id | header size
inline bool TakeRowIdOfHead(const HeadVarints& varints, CarvedRecord& record) {
  if (varints.size() != kCellHeadVarints) return false;
  const uint32_t header_size = varints[0].length + record.serial_bytes;
  const uint32_t payload_size = header_size + record.data_bytes;
  if (varints[0].value != int64_t{header_size} || varints[2].value != int64_t{payload_size}) {
    return false;
  }
  record.row_id = varints[1].value;
  record.has_row_id = true;
  return true;
}

// Looks for the cell head whose last byte stands at `start`. A downward varint has no mark of its
// own beginning, so windows of 3 bytes and more are tried, up to `in_page` bytes. A search that
// finds nothing is no failure: freeblocks overwrite heads.
template <typename Source>
void FindCellHead(Source& source, int32_t start, int32_t in_page, CarvedRecord& record) {
  HeadVarints varints;
  bool has_first_length = false;
  uint32_t first_length = 0;
  int32_t window = 3;
  do {
    varints.clear();
    const int32_t taken = ReadVarintsBackward(source, start, window, varints);
    if (varints.size() == kCellHeadVarints) {
      if (has_first_length && varints[2].length == first_length) break;
      if (!has_first_length) first_length = varints[2].length;
      has_first_length = true;
      if (TakeRowIdOfHead(varints, record)) break;
    }
    // The window was not used up: every wider one would read the same again.
    if (taken < window) break;
    ++window;
  } while (window < in_page);
  ReadVarintsBackward(source, start, in_page, varints);
  TakeRowIdOfHead(varints, record);
}

// Room in front of a record, in its page and in memory, in which every head fits.
inline constexpr int32_t kUsualHeadRoom = 40;

// The varint that ends at `last`, read downward as ReadVarintsBackward does; `last` moves in front
// of it.
inline ReverseVarint TakeVarintBackward(const uint8_t*& last) {
  ReverseVarint varint;
  uint32_t shift = 0;
  bool goes_on = true;
  while (goes_on) {
    uint32_t byte = *last--;
    ++varint.length;
    if (varint.length < 9) byte &= 0x7FU;
    varint.value += static_cast<int32_t>(byte << (shift & 31U));
    shift += 7;
    goes_on = (*last & 0x80U) != 0 && varint.length < 9;
  }
  return varint;
}

// What FindCellHead finds where nothing bounds its windows, without trying them: the first two
// varints are whole in every window that gives three, and the third is tried at each length up to
// its own. `last` is the last byte of the head, with kUsualHeadRoom bytes in front of it.
inline void FindUsualCellHead(const uint8_t* last, CarvedRecord& record) {
  const ReverseVarint header_size = TakeVarintBackward(last);
  const uint32_t header_bytes = header_size.length + record.serial_bytes;
  if (header_size.value != int64_t{header_bytes}) return;
  const ReverseVarint row_id = TakeVarintBackward(last);
  const uint32_t payload_bytes = header_bytes + record.data_bytes;
  int64_t value = 0;
  uint32_t shift = 0;
  for (uint32_t length = 1; length <= 9; ++length, shift += 7) {
    uint32_t byte = *last--;
    if (length < 9) byte &= 0x7FU;
    value += static_cast<int32_t>(byte << (shift & 31U));
    const bool is_last = (*last & 0x80U) == 0;
    if (value == int64_t{payload_bytes}) {
      record.row_id = row_id.value;
      record.has_row_id = true;
      return;
    }
    if (is_last) return;
  }
}
