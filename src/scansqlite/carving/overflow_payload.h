#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "scansqlite/carving/carved_record.h"
#include "scansqlite/init/db_header.h"

// An overflow page: https://www.sqlite.org/fileformat2.html#cell_payload_overflow_pages
//
//   offset  width  meaning
//        0      4  next page of the chain, 0 on the last
//        4         payload
inline constexpr uint32_t kOverflowHeaderBytes = 4;

// Where the gathering of a body stands. The body grows with what the chain delivers, so that a
// hostile length costs nothing before its bytes come.
struct GatheredBody {
  std::vector<uint8_t> bytes;
  uint32_t collected = 0;  // bytes counted; skipped header bytes can make it more than gathered
  uint32_t skip = 0;       // bytes of the header that lie beyond the page
};

// Makes room for `count` more bytes of a body of `data_bytes`, counts them, and gives where they
// go and how many of them fit.
struct BodyRoom {
  uint8_t* out = nullptr;
  uint32_t length = 0;
};
BodyRoom GrowBody(GatheredBody& body, uint32_t count, uint32_t data_bytes);

// The part of a body that stands on the cell's own page: sets `collected` and `skip`. False when
// the record cannot lie in the database, or its local part exceeds the body.
bool MeasureLocalBody(const DbHeaderInfo& header, uint32_t header_start, const CarvedRecord& record,
                      GatheredBody& body);

// Gathers the body of a record with overflow out of the main file. False when the chain leaves the
// file, ends early or makes no progress. Throws std::out_of_range when a read leaves the file.
bool ReadOverflowPayload(const DbHeaderInfo& header, FileDataBuf& file, uint32_t header_start,
                         const CarvedRecord& record, std::vector<uint8_t>& out);
