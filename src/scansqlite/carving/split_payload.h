#pragma once

#include <cstdint>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "common/sqlitecommon/log_file.h"
#include "common/sqlitecommon/raw_value.h"
#include "common/sqlitecommon/reverse_varint.h"
#include "scansqlite/carving/serial_type.h"

// Cuts a record body into values. Stops with false at the first value that would end behind
// `limit` or behind `size`; the values made so far stay. Bytes that `bytes` lacks are 0.
bool SplitPayload(MemoryBytes bytes, uint32_t size, uint32_t limit, const SerialTypeCells& cells,
                  std::vector<RawValue>& values);

// The same on a log, the body standing at `body_offset`. `Frames` is MemoryBytes or LogFileBytes.
template <typename Frames>
bool SplitPayloadInLog(const Frames& frames, uint64_t body_offset, uint32_t size, uint32_t limit,
                       const SerialTypeCells& cells, std::vector<RawValue>& values);

// The same on the file, the body standing at `body_offset`. Throws std::out_of_range when a value
// leaves the file.
bool SplitPayloadInPage(FileDataBuf& file, uint64_t body_offset, uint32_t size, uint32_t limit,
                        const SerialTypeCells& cells, std::vector<RawValue>& values);

// Cuts what a chain delivered: the last value is shortened when the bytes end inside it, and the
// values behind it are absent.
void SplitShortenedPayload(MemoryBytes bytes, uint32_t size, const SerialTypeCells& cells,
                           std::vector<RawValue>& values);
