#include "scansqlite/deleted/main_file_source.h"

#include <algorithm>
#include <cstring>

#include "scansqlite/carving/cell_head.h"
#include "scansqlite/deleted/page_types.h"
#include "scansqlite/sieve/header_sieve.h"

namespace {

constexpr uint64_t kWindowBytes = 262144;

// In front of a page, for cell heads that reach into it.
constexpr uint64_t kBefore = 64;

// Behind a page, for headers that run over its end.
constexpr uint64_t kBehind = 2048;

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

void MainFileSource::Load(uint64_t begin, uint64_t end) {
  const uint64_t from = begin - std::min(begin, kBefore);
  const uint64_t wanted = std::max(kWindowBytes, end - from + kBehind);
  const uint64_t taken = std::min(wanted, size() - from);
  if (capacity_ < wanted + kSieveOverhang) {
    capacity_ = wanted + kSieveOverhang;
    bytes_ = std::make_unique_for_overwrite<uint8_t[]>(capacity_);
  }
  file_.ReadRangeTo(from, taken, bytes_.get());
  std::memset(bytes_.get() + taken, 0, kSieveOverhang);
  begin_ = from;
  end_ = from + taken;
}

ByteView MainFileSource::View(uint64_t begin, uint64_t end) {
  const uint64_t from = begin - std::min(begin, kBefore);
  const uint64_t to = std::min(end + kBehind, size());
  if (from < begin_ || to > end_) Load(begin, end);
  return {bytes_.get(), begin_, end_, size()};
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
