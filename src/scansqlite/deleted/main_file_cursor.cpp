#include "scansqlite/deleted/main_file_cursor.h"

#include <algorithm>

#include "scansqlite/deleted/page_types.h"

namespace {

constexpr uint64_t kDbHeaderEnd = 100;

}  // namespace

MainFileCursor::MainFileCursor(MainFileSource& source, PageList* page_list)
    : source_(source),
      page_list_(page_list),
      position_(page_list == nullptr ? kDbHeaderEnd : source.page_bytes()) {}

// A page of the list is swept from its first byte. The physical page that led here is not swept.
bool MainFileCursor::EnterListedPage() {
  if (next_page_index_ >= page_list_->size()) {
    at_end_ = true;
    return false;
  }
  const int64_t page = (*page_list_)[next_page_index_];
  position_ = static_cast<uint64_t>(page - 1) * source_.page_bytes();
  const auto highest_page = static_cast<int32_t>(source_.header().page_count - 1);
  GetScanPage(source_.file(), position_, highest_page, *page_list_);
  ++next_page_index_;
  return true;
}

bool MainFileCursor::Enter(Segment& segment) {
  const uint64_t page_bytes = source_.page_bytes();
  if (position_ % page_bytes == 0) {
    if (!IsSweptPage(source_.ByteAt(position_))) {
      position_ += page_bytes;
      return false;
    }
    position_ += kLeafHeaderBytes;
    if (page_list_ != nullptr && !EnterListedPage()) return false;
  }
  segment.begin = position_;
  const uint64_t page_end = position_ - position_ % page_bytes + page_bytes;
  segment.end = std::max(segment.begin, std::min(page_end, source_.size()));
  position_ = std::max(segment.begin + 1, segment.end);
  segment.is_whole = position_ % page_bytes == 0;
  return true;
}
