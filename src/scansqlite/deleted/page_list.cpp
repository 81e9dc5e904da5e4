#include "scansqlite/deleted/page_list.h"

#include <algorithm>

#include "common/common/log.h"
#include "common/sqlitecommon/big_endian.h"
#include "scansqlite/deleted/page_types.h"

namespace {

constexpr size_t kMaxListedPages = 4000000;

}  // namespace

PageList::PageList(uint32_t page_count)
    : capacity_(std::min<size_t>(64 + 64 * size_t{page_count}, kMaxListedPages)) {}

void PageList::Add(int32_t page) {
  if (!IsFull()) {
    pages_.push_back(page);
    return;
  }
  if (reported_) return;
  reported_ = true;
  LogEx(kLogModule, kLogInfo, "[%s] The page list is full, the sqlite file may have been corrupted",
        "GetScanPage");
}

bool GetScanPage(FileDataBuf& file, uint64_t offset, int32_t highest_page, PageList& page_list) {
  if (file.ReadByte(offset) != kTableInteriorPage) return false;
  const uint8_t count_high = file.ReadByte(offset + 3);
  const uint32_t cells = BigEndian16(count_high, file.ReadByte(offset + 4));
  for (uint32_t i = 0; i < cells; ++i) {
    const uint64_t pointer_at = offset + 12 + 2 * uint64_t{i};
    const uint8_t high = file.ReadByte(pointer_at);
    const uint32_t cell = BigEndian16(high, file.ReadByte(pointer_at + 1));
    const auto child = static_cast<int32_t>(file.ReadBigEndian32(offset + cell));
    if (child <= highest_page) {
      page_list.Add(child);
    } else {
      LogEx(kLogModule, kLogInfo,
            "[%s] Get a wrong page number, the sqlite file may have been corrupted", "GetScanPage");
    }
  }
  return true;
}
