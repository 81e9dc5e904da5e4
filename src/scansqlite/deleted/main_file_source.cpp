#include "scansqlite/deleted/main_file_source.h"

#include <algorithm>

#include "scansqlite/carving/cell_head.h"
#include "scansqlite/deleted/page_types.h"

namespace {

constexpr uint64_t kSmallestPage = 512;
constexpr uint64_t kDbHeaderEnd = 100;

// From here on offsets of a record no longer fit the arithmetic of the general test, and what it
// makes of them shows in log lines.
constexpr uint64_t kLastPlainOffset = uint64_t{0x7FFFFFFF} - 65536;

// A chain or a value of such a file never leaves it.
bool IsSound(const DbHeaderInfo& header, uint64_t file_size) {
  const uint64_t stated = uint64_t{header.page_size} * header.page_count;
  return header.page_size >= kSmallestPage && stated <= file_size && stated <= 0xFFFFFFFFU;
}

}  // namespace

MainFileSource::MainFileSource(const DbHeaderInfo& header, FileDataBuf& file)
    : header_(header),
      file_(file),
      carver_(header, file),
      is_sound_(IsSound(header, file.file_size())) {}

ByteView MainFileSource::View(uint64_t begin, uint64_t end) {
  return window_.View(begin, end, size(), [this](uint64_t from, uint64_t length, uint8_t* out) {
    file_.ReadRangeTo(from, length, out);
  });
}

bool MainFileSource::HasUsualPages() const { return header_.page_size >= kSmallestPage; }

SegmentCare MainFileSource::CareFor(const Segment& segment) const {
  // The search for a cell head must not run out of the file's beginning, which shows in log lines.
  if (!HasUsualPages() || segment.begin < kUsualHeadRoom) return SegmentCare::kGeneral;
  if (!is_sound_ || segment.end > kLastPlainOffset) return SegmentCare::kCareful;
  return SegmentCare::kFast;
}

Segment MainFileSource::SweptPart(uint64_t page_begin) const {
  const uint64_t page_end = page_begin + header_.page_size;
  const uint64_t begin = page_begin == 0 ? kDbHeaderEnd : page_begin + kLeafHeaderBytes;
  return {begin, std::max(begin, std::min(page_end, size())), page_end <= size()};
}
