#include "common/common/file_loader.h"
#include "common/common/log.h"
#include "common/common/source_path.h"
#include "reference/carve_table.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/wal_carver.h"
#include "scansqlite/deleted/page_types.h"

namespace {

constexpr int32_t kSystemAndroid = 0;
constexpr int32_t kDataWechat = 9;

// The application on Android keeps the last bytes of each page for itself.
constexpr uint32_t kWechatReservedBytes = 16;

uint32_t KeptOutBytes(const ScanContext& context) {
  const bool keeps = context.system_type == kSystemAndroid && context.data_type == kDataWechat;
  return keeps ? kWechatReservedBytes : 0;
}

}  // namespace

int32_t PlainScan::WalkLog(Hits* hits) {
  FileDataBuf file(probe_.context().source_db_path);
  if (file.status() != 0) {
    LogEx(kLogModule, kLogError, "create file data buf fail File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, "ScanSqlite::DeleteScanSqliteWalFile", __LINE__);
    return kScanFileBufferFailed;
  }
  LogFile log;
  if (!log.Open(probe_.working_wal_path())) {
    LogEx(kLogModule, kLogError, "Load file error! File : %s, Function : %s, Line : %d, ",
          kSourceScanSqlite, "ScanSqlite::DeleteScanSqliteWalFile", __LINE__);
    return kScanFileBufferFailed;
  }
  LogEx(kLogModule, kLogInfo, "%s ScanSqliteWal Init Succeed",
        probe_.context().source_db_path.c_str());
  if (log.size() <= kWalHeaderBytes) return kScanFileBufferFailed;
  std::vector<uint8_t> frames(log.size() - kWalHeaderBytes);
  log.ReadTo(kWalHeaderBytes, frames.size(), frames.data());
  for (const auto& [name, table] : probe_.table_infos()) {
    if (table.scan_type == 1) continue;
    CarveTable(table, hits, [&](const TablePass& pass) { WalkFrames(frames, file, pass); });
  }
  return kScanSucceeded;
}

// The walk enters a frame at byte 8 of its header: what is left of the header and the first bytes
// of the page are positions like any other.
void PlainScan::WalkFrames(const std::vector<uint8_t>& frames, FileDataBuf& file,
                           const TablePass& pass) {
  const uint64_t frame_size = probe_.header().page_size + kWalFrameHeaderBytes;
  const MemoryBytes bytes{frames.data(), frames.size()};
  WalCarver<MemoryBytes> carver(
      {&probe_.header(), bytes, &probe_.wal_page_map(), &file, KeptOutBytes(probe_.context())});
  plain_walk::PageRows rows(pass);
  SerialTypeCells cells;
  RowValue row;
  RowIdHint hint;
  uint64_t position = 0;
  while (position < bytes.size) {
    if (!plain_walk::MayGoOn()) {
      LogEx(kLogModule, kLogInfo, "%s Stop", "ScanSqlite::SqliteFileWALWithOverflowScan");
      return;
    }
    if (position % frame_size == 0) {
      if (!IsSweptPage(bytes.ReadByte(position + kWalFrameHeaderBytes))) {
        position += frame_size;
        continue;
      }
      position += kLeafHeaderBytes;
      rows.Flush();
    }
    if (TestPosition(pass.layout, carver, position, cells, row, hint)) {
      rows.Add(std::move(row), hint, position);
    }
    ++position;
  }
  if (position % frame_size == 0) rows.Flush();
}
