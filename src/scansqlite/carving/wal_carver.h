#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/raw_value.h"
#include "common/sqlitecommon/reverse_varint.h"
#include "scansqlite/carving/overflow_payload_wal.h"
#include "scansqlite/carving/serial_type.h"

// Takes the values of a record whose serial types stand in a frame of the log.
class WalCarver {
 public:
  explicit WalCarver(const WalSource& source) : source_(source) {}

  MemoryBytes& source() { return source_.frames; }

  // No value of a record is as long as this many bytes or longer.
  uint32_t value_size_limit() const { return static_cast<uint32_t>(source_.frames.size); }

  // As MainFileCarver::CarveRecord, but a chain that ends early shortens the record.
  bool CarveRecord(uint64_t position, bool first_column_is_key, const SerialTypeCells& cells,
                   CarvedRecord& record, std::vector<RawValue>& values);

 private:
  uint32_t SaltOfFrame(uint64_t position) const;

  WalSource source_;
};
