#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "common/sqlitecommon/log_file.h"
#include "common/sqlitecommon/reverse_varint.h"
#include "scansqlite/carving/carved_record.h"
#include "scansqlite/init/db_header.h"
#include "scansqlite/init/wal_page_map.h"

// Where the pages of a chain that starts in the log are found: in the newest frame of the page
// whose salt-1 equals `salt`, else in the main file. `Frames` is LogFileBytes, or MemoryBytes.
template <typename Frames>
struct WalSource {
  const DbHeaderInfo* header = nullptr;
  Frames frames;  // the log without its 32-byte header
  const WalPageMap* page_map = nullptr;
  FileDataBuf* file = nullptr;
  uint32_t kept_out_bytes = 0;  // bytes at the end of an overflow page that carry no payload
};

// Gathers the body of a record with overflow that stands in the log. A chain that ends early
// shortens `data_bytes` of the record to what it delivered. False when the chain leaves the
// database or makes no progress. Throws std::out_of_range when a read leaves the main file.
template <typename Frames>
bool ReadOverflowPayloadWal(const WalSource<Frames>& source, uint32_t salt, uint32_t header_start,
                            CarvedRecord& record, std::vector<uint8_t>& out);
