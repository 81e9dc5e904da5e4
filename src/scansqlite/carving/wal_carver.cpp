#include "scansqlite/carving/wal_carver.h"

#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/carving/split_payload.h"

namespace {

constexpr uint64_t kSalt1InFrame = 8;

}  // namespace

// Only the first byte of salt-1 is taken, so that chains go through the log only where the three
// others are 0; all other chains are read from the main file.
template <typename Frames>
uint32_t WalCarver<Frames>::SaltOfFrame(uint64_t position) const {
  const uint64_t frame_size = source_.header->page_size + kWalFrameHeaderBytes;
  const uint64_t frame_start = position - position % frame_size;
  return uint32_t{source_.frames.ReadByte(frame_start + kSalt1InFrame)} << 24;
}

// `in_page` is not reduced by the frame headers: it bounds the search for the head and drifts by
// 24 bytes from frame to frame.
template <typename Frames>
bool WalCarver<Frames>::CarveRecord(uint64_t position, bool first_column_is_key,
                                    const SerialTypeCells& cells, CarvedRecord& record,
                                    std::vector<RawValue>& values) {
  const DbHeaderInfo& header = *source_.header;
  const auto in_page = static_cast<int32_t>(position % header.page_size);
  FindCellHead(source_.frames, CellHeadEnd(position, first_column_is_key), in_page, record);
  record.local_size = record.data_bytes;
  const uint32_t header_start = HeaderStart(position, first_column_is_key, record);
  if (header.table_max_leaf >= record.payload_size) {
    const uint32_t body_start = header_start + record.header_size;
    const uint32_t bytes_left =
        static_cast<uint32_t>(SourceSize(source_.frames)) - record.header_size - header_start;
    SplitPayloadInLog(source_.frames, body_start, record.data_bytes, bytes_left, cells, values);
    return true;
  }
  if (!MeasureLocalPayload(header, record)) return false;
  std::vector<uint8_t> body;
  if (!ReadOverflowPayloadWal(source_, SaltOfFrame(position), header_start, record, body)) {
    return false;
  }
  SplitShortenedPayload({body.data(), body.size()}, record.data_bytes, cells, values);
  return true;
}

template class WalCarver<MemoryBytes>;
template class WalCarver<LogFileBytes>;
