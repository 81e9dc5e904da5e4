#include "scansqlite/carving/split_payload.h"

#include <algorithm>
#include <utility>

namespace {

// A constant has no bytes in the body; its number stands in one byte of its own.
RawValue MakeConstant(const SerialTypeCell& cell) {
  RawValue value;
  value.length = 1;
  value.storage_class = kClassUndecided;
  value.bytes = std::make_unique<uint8_t[]>(1);
  value.bytes[0] = static_cast<uint8_t>(cell.constant_value);
  return value;
}

template <typename CopyBytes>
RawValue MakeValue(const SerialTypeCell& cell, uint32_t length, uint32_t consumed,
                   const CopyBytes& copy_bytes) {
  RawValue value;
  value.length = static_cast<int32_t>(length);
  value.storage_class = cell.storage_class;
  if (length != 0) {
    value.bytes = std::make_unique<uint8_t[]>(length);
    copy_bytes(consumed, length, value.bytes.get());
  }
  return value;
}

template <typename CopyBytes>
bool Split(uint32_t size, uint32_t limit, const SerialTypeCells& cells,
           std::vector<RawValue>& values, const CopyBytes& copy_bytes) {
  uint32_t consumed = 0;
  for (const SerialTypeCell& cell : cells) {
    const uint32_t end = cell.payload_length + consumed;
    if (end > limit || end > size) return false;
    if (cell.is_constant) {
      values.push_back(MakeConstant(cell));
      continue;
    }
    values.push_back(MakeValue(cell, cell.payload_length, consumed, copy_bytes));
    consumed += cell.payload_length;
  }
  return true;
}

template <typename Bytes>
auto CopyFrom(const Bytes& bytes, uint64_t offset) {
  return [&bytes, offset](uint32_t consumed, uint32_t length, uint8_t* out) {
    bytes.CopyTo(offset + consumed, length, out);
  };
}

}  // namespace

bool SplitPayload(MemoryBytes bytes, uint32_t size, uint32_t limit, const SerialTypeCells& cells,
                  std::vector<RawValue>& values) {
  return Split(size, limit, cells, values, CopyFrom(bytes, 0));
}

template <typename Frames>
bool SplitPayloadInLog(const Frames& frames, uint64_t body_offset, uint32_t size, uint32_t limit,
                       const SerialTypeCells& cells, std::vector<RawValue>& values) {
  return Split(size, limit, cells, values, CopyFrom(frames, body_offset));
}

template bool SplitPayloadInLog(const MemoryBytes&, uint64_t, uint32_t, uint32_t,
                                const SerialTypeCells&, std::vector<RawValue>&);
template bool SplitPayloadInLog(const LogFileBytes&, uint64_t, uint32_t, uint32_t,
                                const SerialTypeCells&, std::vector<RawValue>&);

bool SplitPayloadInPage(FileDataBuf& file, uint64_t body_offset, uint32_t size, uint32_t limit,
                        const SerialTypeCells& cells, std::vector<RawValue>& values) {
  return Split(size, limit, cells, values,
               [&file, body_offset](uint32_t consumed, uint32_t length, uint8_t* out) {
                 file.ReadRangeTo(body_offset + consumed, length, out);
               });
}

void SplitShortenedPayload(MemoryBytes bytes, uint32_t size, const SerialTypeCells& cells,
                           std::vector<RawValue>& values) {
  uint32_t consumed = 0;
  for (const SerialTypeCell& cell : cells) {
    if (consumed >= size) return;
    if (cell.is_constant) {
      values.push_back(MakeConstant(cell));
      continue;
    }
    const uint32_t length = std::min(cell.payload_length, size - consumed);
    values.push_back(MakeValue(cell, length, consumed, CopyFrom(bytes, 0)));
    consumed += length;
  }
}
