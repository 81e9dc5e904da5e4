#include "scansqlite/carving/main_file_carver.h"

#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/overflow_payload.h"
#include "scansqlite/carving/split_payload.h"

bool MainFileCarver::CarveRecord(uint64_t position, bool first_column_is_key,
                                 const SerialTypeCells& cells, CarvedRecord& record,
                                 std::vector<RawValue>& values) {
  const auto in_page = static_cast<int32_t>(position % header_.page_size);
  FindCellHead(file_, CellHeadEnd(position, first_column_is_key), in_page, record);
  record.local_size = record.data_bytes;
  const uint32_t header_start = HeaderStart(position, first_column_is_key, record);
  if (header_.table_max_leaf >= record.payload_size) {
    const uint32_t body_start = header_start + record.header_size;
    const uint32_t bytes_left =
        static_cast<uint32_t>(file_.file_size()) - record.header_size - header_start;
    SplitPayloadInPage(file_, body_start, record.data_bytes, bytes_left, cells, values);
    return true;
  }
  if (!MeasureLocalPayload(header_, record)) return false;
  std::vector<uint8_t> body;
  if (!ReadOverflowPayload(header_, file_, header_start, record, body)) return false;
  SplitPayload({body.data(), body.size()}, record.data_bytes, record.data_bytes, cells, values);
  return true;
}
