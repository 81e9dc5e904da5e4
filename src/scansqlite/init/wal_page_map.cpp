#include "scansqlite/init/wal_page_map.h"

#include <utility>

#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/path_helpers.h"
#include "common/common/source_path.h"
#include "common/sqlitecommon/big_endian.h"
#include "scansqlite/scan_sqlite.h"

namespace {

constexpr int kLineLoadLog = 270;  // stands in the message's text; it does not follow the code

// The fields that are read of a frame end here.
constexpr size_t kFrameFieldBytes = 12;

}  // namespace

const char* const ScanSqlite::kMangledGetWalFilePageMap =
    "_ZN10ScanSqlite17GetWALFilePageMapENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";

template <typename Frames>
void MapWalFrames(const Frames& frames, uint64_t frame_size, WalPageMap& map) {
  for (uint64_t at = 0; at + kFrameFieldBytes <= SourceSize(frames); at += frame_size) {
    uint8_t frame[kFrameFieldBytes];
    for (uint64_t i = 0; i < kFrameFieldBytes; ++i) frame[i] = frames.ReadByte(at + i);
    const uint32_t page_number = BigEndian32(frame[0], frame[1], frame[2], frame[3]);
    const uint32_t salt1 = BigEndian32(frame[8], frame[9], frame[10], frame[11]);
    map[page_number].push_back({salt1, static_cast<uint32_t>(at)});
  }
}

template void MapWalFrames(const MemoryBytes&, uint64_t, WalPageMap&);
template void MapWalFrames(const LogFileBytes&, uint64_t, WalPageMap&);

// By value: the argument is part of the name that the log line states.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
bool ScanSqlite::GetWALFilePageMap(std::string path) {
  if (!PathExists(path)) return true;
  LogFile log;
  if (!log.Open(working_wal_path_)) {
    LogEx(kLogModule, kLogError, "Load file error! File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, kMangledGetWalFilePageMap, kLineLoadLog);
    return false;
  }
  if (log.size() <= kWalHeaderBytes) return false;
  MapWalFrames(LogFileBytes(log, kWalHeaderBytes), db_header_.page_size + kWalFrameHeaderBytes,
               wal_page_map_);
  return true;
}
