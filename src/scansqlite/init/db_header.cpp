#include "scansqlite/init/db_header.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/big_endian.h"

namespace {

// Line numbers that stand in the texts of these messages; they do not follow the code.
constexpr int kLineShortHeader = 307;
constexpr int kLineWrongMagic = 313;
constexpr int kLineOpenFile = 414;

constexpr std::string_view kMagic("SQLite format 3\0", 16);

uint32_t ReadU16(const std::vector<uint8_t>& bytes, size_t at) {
  return BigEndian16(bytes[at], bytes[at + 1]);
}

uint32_t ReadU32(const std::vector<uint8_t>& bytes, size_t at) {
  return BigEndian32(bytes[at], bytes[at + 1], bytes[at + 2], bytes[at + 3]);
}

// The limits of local payload, with U the usable size:
//   index max  (U - 12) * 64 / 255 - 23
//   minimum    (U - 12) * 32 / 255 - 23
//   leaf max   U - 35
// https://www.sqlite.org/fileformat2.html#b_tree_pages
// The division runs in 32 bits unsigned and the results keep 16 bits.
void DeriveLocalLimits(DbHeaderInfo& info) {
  const uint32_t usable = uint32_t{info.page_size} - uint32_t{info.reserved_size};
  info.index_max_local = static_cast<uint16_t>((usable * 64U - 768U) / 255U - 23U);
  info.index_min_local = static_cast<uint16_t>((usable * 32U - 384U) / 255U - 23U);
  info.table_max_leaf = static_cast<uint16_t>(usable - 35U);
  info.table_min_local = info.index_min_local;
}

}  // namespace

bool CheckDbHeader(const std::vector<uint8_t>& header) {
  if (header.size() < kDbHeaderBytes) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, not a valid SQLite DB file.", kSourceScanSqlite,
          kLineShortHeader);
    return false;
  }
  if (std::memcmp(header.data(), kMagic.data(), kMagic.size()) != 0) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, not a valid SQLite DB file.", kSourceScanSqlite,
          kLineWrongMagic);
    return false;
  }
  return true;
}

bool GetDbHeaderInfo(const std::string& path, const std::vector<uint8_t>& header,
                     DbHeaderInfo& info) {
  info.page_size = static_cast<uint16_t>(ReadU16(header, 16));
  info.reserved_size = header[20];
  info.page_count = ReadU32(header, 28);
  DeriveLocalLimits(info);
  info.text_encoding = ReadU32(header, 56);
  uint64_t file_size = 0;
  if (!MeasureFile(path, file_size)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to load file %s, %s", kSourceScanSqlite,
          kLineOpenFile, std::strerror(errno), path.c_str());
    return false;
  }
  if (info.page_size == 0) return false;
  const uint32_t stated_size = uint32_t{info.page_size} * info.page_count;
  if (stated_size != file_size) {
    info.page_count = static_cast<uint32_t>(file_size / info.page_size);
  }
  return true;
}
