#include "scansqlite/carving/overflow_payload_wal.h"

#include <algorithm>
#include <utility>

#include "common/sqlitecommon/big_endian.h"
#include "scansqlite/carving/overflow_payload.h"
#include "scansqlite/carving/parse_serial_types.h"

namespace {

template <typename Frames>
uint32_t ReadFrameU32(const Frames& frames, uint64_t at) {
  return BigEndian32(frames.ReadByte(at), frames.ReadByte(at + 1), frames.ReadByte(at + 2),
                     frames.ReadByte(at + 3));
}

// The newest frame of the page with the salt, or null.
const WalFrame* FindFrame(const WalPageMap& map, uint32_t page, uint32_t salt) {
  const auto frames = map.find(page);
  if (frames == map.end()) return nullptr;
  const auto newest = std::find_if(frames->second.rbegin(), frames->second.rend(),
                                   [salt](const WalFrame& frame) { return frame.salt1 == salt; });
  return newest == frames->second.rend() ? nullptr : &*newest;
}

// One page of a chain, in the log or in the main file.
struct ChainPage {
  bool in_log = false;
  uint64_t at = 0;  // of the page's first byte, in the log's frames or in the main file
};

template <typename Frames>
ChainPage FindChainPage(const WalSource<Frames>& source, uint32_t page, uint32_t salt) {
  if (const WalFrame* frame = FindFrame(*source.page_map, page, salt)) {
    return {true, uint64_t{frame->frame_offset} + kWalFrameHeaderBytes};
  }
  return {false, (uint64_t{page} - 1) * source.header->page_size};
}

template <typename Frames>
uint32_t ReadNextPage(const WalSource<Frames>& source, const ChainPage& page) {
  return page.in_log ? ReadFrameU32(source.frames, page.at) : source.file->PeekBigEndian32(page.at);
}

template <typename Frames>
void CopyPayload(const WalSource<Frames>& source, const ChainPage& page, uint32_t count,
                 uint32_t data_bytes, GatheredBody& body) {
  const uint64_t from = page.at + kOverflowHeaderBytes;
  if (!page.in_log) source.file->CheckRange(from, count);
  const BodyRoom room = GrowBody(body, count, data_bytes);
  if (!page.in_log) {
    source.file->ReadRangeTo(from, room.length, room.out);
  } else if (room.length != 0) {
    source.frames.CopyTo(from, room.length, room.out);
  }
}

template <typename Frames>
bool CopyLocalBody(const WalSource<Frames>& source, uint32_t header_start,
                   const CarvedRecord& record, GatheredBody& body) {
  const uint32_t body_start = header_start + record.header_size;
  if (uint64_t{body_start} + body.collected > SourceSize(source.frames)) return false;
  if (body.collected == 0) return true;
  body.bytes.resize(body.collected);
  source.frames.CopyTo(body_start, body.collected, body.bytes.data());
  return true;
}

}  // namespace

template <typename Frames>
bool ReadOverflowPayloadWal(const WalSource<Frames>& source, uint32_t salt, uint32_t header_start,
                            CarvedRecord& record, std::vector<uint8_t>& out) {
  const DbHeaderInfo& header = *source.header;
  GatheredBody body;
  if (!MeasureLocalBody(header, header_start, record, body)) return false;
  if (record.serial_bytes < record.local_size &&
      !CopyLocalBody(source, header_start, record, body)) {
    return false;
  }
  const uint32_t first_page_at = header_start + record.local_size;
  uint32_t page = ReadFrameU32(source.frames, first_page_at);
  const uint32_t chunk = uint32_t{header.page_size} - kOverflowHeaderBytes;
  uint64_t idle_pages = 0;  // pages in a row that gave nothing: more than there are is a loop
  while (page != 0 && body.collected < record.data_bytes) {
    if (page >= header.page_count || idle_pages > header.page_count) return false;
    const ChainPage found = FindChainPage(source, page, salt);
    page = ReadNextPage(source, found);
    if (body.skip >= 1 && body.skip >= chunk) {
      body.skip -= chunk;
      idle_pages = chunk == 0 ? idle_pages + 1 : 0;
      continue;
    }
    const uint32_t count = std::min(record.data_bytes - body.collected + body.skip,
                                    chunk - source.kept_out_bytes - body.skip);
    idle_pages = count == 0 && body.skip == 0 ? idle_pages + 1 : 0;
    CopyPayload(source, found, count, record.data_bytes, body);
    body.skip = 0;
  }
  if (body.collected < record.data_bytes) record.data_bytes = body.collected;
  body.bytes.resize(record.data_bytes);
  out = std::move(body.bytes);
  return true;
}

template bool ReadOverflowPayloadWal(const WalSource<MemoryBytes>&, uint32_t, uint32_t,
                                     CarvedRecord&, std::vector<uint8_t>&);
template bool ReadOverflowPayloadWal(const WalSource<LogFileBytes>&, uint32_t, uint32_t,
                                     CarvedRecord&, std::vector<uint8_t>&);
