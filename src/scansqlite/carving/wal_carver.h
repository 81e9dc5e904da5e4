#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/overflow_payload_wal.h"
#include "scansqlite/carving/parse_serial_types.h"
#include "scansqlite/carving/serial_type.h"

// Takes the values of a record whose serial types stand in a frame of the log. `Frames` as in
// WalSource.
template <typename Frames>
class WalCarver {
 public:
  explicit WalCarver(const WalSource<Frames>& source) : source_(source) {}

  Frames& source() { return source_.frames; }

  // No value of a record is as long as this many bytes or longer.
  uint32_t value_size_limit() const { return static_cast<uint32_t>(SourceSize(source_.frames)); }

  // As MainFileCarver::CarveRecord, but a chain that ends early shortens the record.
  bool CarveRecord(uint64_t position, bool first_column_is_key, const SerialTypeCells& cells,
                   CarvedRecord& record, std::vector<RawValue>& values);

 private:
  uint32_t SaltOfFrame(uint64_t position) const;

  WalSource<Frames> source_;
};

extern template class WalCarver<MemoryBytes>;
extern template class WalCarver<LogFileBytes>;
