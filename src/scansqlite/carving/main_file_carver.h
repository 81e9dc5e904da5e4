#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/carved_record.h"
#include "scansqlite/carving/serial_type.h"

// Takes the values of a record whose serial types stand in the main file.
class MainFileCarver {
 public:
  MainFileCarver(const DbHeaderInfo& header, FileDataBuf& file) : header_(header), file_(file) {}

  FileDataBuf& source() { return file_; }

  // No value of a record is as long as this many bytes or longer.
  uint32_t value_size_limit() const { return static_cast<uint32_t>(file_.file_size()); }

  // Looks for the cell head, sets `local_size`, and takes the values. False: a miss.
  bool CarveRecord(uint64_t position, bool first_column_is_key, const SerialTypeCells& cells,
                   CarvedRecord& record, std::vector<RawValue>& values);

 private:
  const DbHeaderInfo& header_;
  FileDataBuf& file_;
};

// Where the record header begins if the size that the cells give is right. Offsets of a record are
// reckoned in 32 bits.
inline uint32_t HeaderStart(uint64_t position, bool first_column_is_key,
                            const CarvedRecord& record) {
  return record.serial_bytes - (first_column_is_key ? 1U : 0U) - record.header_size +
         static_cast<uint32_t>(position);
}

// The last byte of the header's length varint. With a row id alias in the first column, that
// column's NULL stands in between.
inline int32_t CellHeadEnd(uint64_t position, bool first_column_is_key) {
  return static_cast<int32_t>(
      static_cast<uint32_t>(position - 1 - (first_column_is_key ? 1U : 0U)));
}
