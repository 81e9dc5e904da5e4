#include "scansqlite/carving/overflow_payload.h"

#include <algorithm>
#include <utility>

BodyRoom GrowBody(GatheredBody& body, uint32_t count, uint32_t data_bytes) {
  const uint32_t at = std::min(body.collected, data_bytes);
  const uint32_t length = std::min(count, data_bytes - at);
  body.bytes.resize(size_t{at} + length);
  body.collected += count;
  return {body.bytes.data() + at, length};
}

// The first comparison goes by the serial types alone, without the header's own length varint.
bool MeasureLocalBody(const DbHeaderInfo& header, uint32_t header_start, const CarvedRecord& record,
                      GatheredBody& body) {
  const uint32_t local_end = record.local_size + kOverflowHeaderBytes + header_start;
  if (local_end > uint32_t{header.page_size} * header.page_count) return false;
  if (record.serial_bytes >= record.local_size) {
    body.skip = record.serial_bytes - record.local_size;
    body.collected = 0;
    return true;
  }
  body.collected = record.local_size - record.header_size;
  return body.collected <= record.data_bytes;
}

bool ReadOverflowPayload(const DbHeaderInfo& header, FileDataBuf& file, uint32_t header_start,
                         const CarvedRecord& record, std::vector<uint8_t>& out) {
  GatheredBody body;
  if (!MeasureLocalBody(header, header_start, record, body)) return false;
  if (body.collected != 0) {
    const uint32_t body_start = header_start + record.header_size;
    file.CheckRange(body_start, body.collected);
    body.bytes.resize(body.collected);
    file.ReadRangeTo(body_start, body.collected, body.bytes.data());
  }
  const uint32_t first_page_at = header_start + record.local_size;
  uint32_t page = file.PeekBigEndian32(first_page_at);
  const uint32_t chunk = uint32_t{header.page_size} - kOverflowHeaderBytes;
  while (page != 0 && body.collected < record.data_bytes) {
    if (page >= header.page_count) return false;
    const uint64_t page_at = (uint64_t{page} - 1) * header.page_size;
    page = file.PeekBigEndian32(page_at);
    if (body.skip >= 1 && body.skip >= chunk) {
      if (chunk == 0) return false;
      body.skip -= chunk;
      continue;
    }
    const uint32_t count =
        std::min(record.data_bytes - body.collected + body.skip, chunk - body.skip);
    if (count == 0) return false;
    // The skipped bytes are counted and not stepped over: the copy begins at the page's payload.
    file.CheckRange(page_at + kOverflowHeaderBytes, count);
    const BodyRoom room = GrowBody(body, count, record.data_bytes);
    file.ReadRangeTo(page_at + kOverflowHeaderBytes, room.length, room.out);
    body.skip = 0;
  }
  if (body.collected < record.data_bytes) return false;
  body.bytes.resize(record.data_bytes);
  out = std::move(body.bytes);
  return true;
}
