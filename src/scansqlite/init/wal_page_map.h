#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "common/sqlitecommon/log_file.h"
#include "common/sqlitecommon/reverse_varint.h"

// The write-ahead log starts with 32 bytes of its own, and each frame with 24.
// https://www.sqlite.org/fileformat2.html#the_write_ahead_log
//
//   offset in the frame  width      meaning
//                     0      4      page number
//                     4      4      database size after commit
//                     8      4      salt-1
//                    12      4      salt-2
//                    16      8      checksum
//                    24  page size  page image
inline constexpr uint64_t kWalHeaderBytes = 32;
inline constexpr uint64_t kWalFrameHeaderBytes = 24;

struct WalFrame {
  uint32_t salt1 = 0;
  uint32_t frame_offset = 0;  // of the frame's header, behind the log's header; wraps at 4 GiB
};

// From page number to its frames, the oldest first. No frame is tested: those of earlier
// generations and of transactions that never committed are wanted too.
using WalPageMap = std::unordered_map<uint32_t, std::vector<WalFrame>>;

// Adds an entry for every frame of `frames`, the log without its header. A last frame of fewer
// than 12 bytes has no fields to read and gets none.
// `Frames` is LogFileBytes, or MemoryBytes.
template <typename Frames>
void MapWalFrames(const Frames& frames, uint64_t frame_size, WalPageMap& map);
