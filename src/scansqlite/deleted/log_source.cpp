#include "scansqlite/deleted/log_source.h"

#include <algorithm>

#include "scansqlite/deleted/page_types.h"

namespace {

constexpr uint64_t kSmallestPage = 512;
constexpr uint64_t kLastPlainOffset = uint64_t{0x7FFFFFFF} - 65536;

// A chain that goes on in such a main file never leaves it.
bool IsSound(const WalSource<LogFileBytes>& source) {
  const DbHeaderInfo& header = *source.header;
  const uint64_t stated = uint64_t{header.page_size} * header.page_count;
  return header.page_size >= kSmallestPage && stated <= source.file->file_size() &&
         stated <= 0xFFFFFFFFU && source.kept_out_bytes == 0;
}

}  // namespace

LogSource::LogSource(const WalSource<LogFileBytes>& source)
    : source_(source), carver_(source), is_sound_(IsSound(source)) {}

ByteView LogSource::View(uint64_t begin, uint64_t end) {
  return window_.View(begin, end, size(), [this](uint64_t from, uint64_t length, uint8_t* out) {
    source_.frames.CopyTo(from, length, out);
  });
}

uint64_t LogSource::page_bytes() const {
  return source_.header->page_size + uint64_t{kWalFrameHeaderBytes};
}

bool LogSource::HasUsualPages() const { return source_.header->page_size >= kSmallestPage; }

SegmentCare LogSource::CareFor(const Segment& segment) const {
  if (!HasUsualPages()) return SegmentCare::kGeneral;
  if (!is_sound_ || segment.end > kLastPlainOffset) return SegmentCare::kCareful;
  return SegmentCare::kFast;
}

// A frame is entered at byte 8 of its header: what is left of the header and the first bytes of the
// page are positions like any other.
Segment LogSource::SweptPart(uint64_t frame_begin) const {
  const uint64_t begin = frame_begin + kLeafHeaderBytes;
  const uint64_t frame_end = frame_begin + page_bytes();
  return {begin, std::max(begin, std::min(frame_end, size())), frame_end <= size()};
}

bool LogCursor::Enter(Segment& segment) {
  const uint64_t frame_begin = position_;
  position_ += source_.page_bytes();
  if (!IsSweptPage(source_.ByteAt(frame_begin + kWalFrameHeaderBytes))) return false;
  segment = source_.SweptPart(frame_begin);
  return true;
}
