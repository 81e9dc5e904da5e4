#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Page geometry and text encoding of the source, out of the database header.
// https://www.sqlite.org/fileformat2.html#the_database_header
//
//   offset  width  meaning
//        0     16  "SQLite format 3" and a zero byte
//       16      2  page size
//       20      1  reserved bytes at the end of each page
//       28      4  database size in pages
//       56      4  text encoding
//
// A stored page size of 1, which stands for 65536, is kept as 1.
struct DbHeaderInfo {
  uint16_t page_size = 0;
  uint16_t reserved_size = 0;
  uint32_t page_count = 0;  // from the file's size when the header's count disagrees with it
  uint32_t index_max_local = 0;
  uint32_t index_min_local = 0;
  uint32_t table_max_leaf = 0;
  uint32_t table_min_local = 0;
  uint32_t text_encoding = 0;
};

// Text is UTF-8; any other encoding is read as little-endian UTF-16.
inline constexpr uint32_t kEncodingUtf8 = 1;

// True when the bytes are those of a database header; a refusal writes one log line at level 3.
bool CheckDbHeader(const std::vector<uint8_t>& header);

// Fills `info` from the 100 header bytes and the size of the file at `path` (UTF-8). False when
// the file cannot be opened (one log line) or the stored page size is 0; `info` is filled then
// too, but for the corrected page count.
bool GetDbHeaderInfo(const std::string& path, const std::vector<uint8_t>& header,
                     DbHeaderInfo& info);
