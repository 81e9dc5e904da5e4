#include "scansqlite/carving/overflow_payload_wal.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/sqlitecommon/big_endian.h"
#include "scansqlite/carving/overflow_payload.h"

namespace {

uint32_t ReadFrameU32(const MemoryBytes& frames, uint64_t at) {
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

ChainPage FindChainPage(const WalSource& source, uint32_t page, uint32_t salt) {
  if (const WalFrame* frame = FindFrame(*source.page_map, page, salt)) {
    return {true, uint64_t{frame->frame_offset} + kWalFrameHeaderBytes};
  }
  return {false, (uint64_t{page} - 1) * source.header->page_size};
}

uint32_t ReadNextPage(const WalSource& source, const ChainPage& page) {
  return page.in_log ? ReadFrameU32(source.frames, page.at) : source.file->PeekBigEndian32(page.at);
}

void CopyPayload(const WalSource& source, const ChainPage& page, uint32_t count,
                 uint32_t data_bytes, GatheredBody& body) {
  const uint64_t from = page.at + kOverflowHeaderBytes;
  if (!page.in_log) source.file->CheckRange(from, count);
  const BodyRoom room = GrowBody(body, count, data_bytes);
  if (!page.in_log) {
    source.file->ReadRangeTo(from, room.length, room.out);
  } else if (from < source.frames.size && room.length != 0) {
    std::memcpy(room.out, source.frames.bytes + from,
                std::min<uint64_t>(room.length, source.frames.size - from));
  }
}

bool CopyLocalBody(const WalSource& source, uint32_t header_start, const CarvedRecord& record,
                   GatheredBody& body) {
  const uint32_t body_start = header_start + record.header_size;
  if (uint64_t{body_start} + body.collected > source.frames.size) return false;
  if (body.collected == 0) return true;
  const uint8_t* from = source.frames.bytes + body_start;
  body.bytes.assign(from, from + body.collected);
  return true;
}

}  // namespace

bool ReadOverflowPayloadWal(const WalSource& source, uint32_t salt, uint32_t header_start,
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
