#pragma once

#include "scansqlite/carving/byte_view.h"
#include "scansqlite/carving/wal_carver.h"
#include "scansqlite/deleted/file_window.h"
#include "scansqlite/deleted/segment.h"

// The frames of the log as the sweep reads them.
class LogSource {
 public:
  explicit LogSource(const WalSource<LogFileBytes>& source);

  // As MainFileSource.
  ByteView View(uint64_t begin, uint64_t end);
  uint8_t ByteAt(uint64_t position) { return *View(position, position + 1).At(position); }
  uint64_t size() const { return source_.frames.size(); }
  uint64_t page_bytes() const;  // of a page with its frame header
  WalCarver<LogFileBytes>& carver() { return carver_; }
  bool HasUsualPages() const;  // as MainFileSource
  SegmentCare CareFor(const Segment& segment) const;
  Segment SweptPart(uint64_t frame_begin) const;

 private:
  WalSource<LogFileBytes> source_;
  WalCarver<LogFileBytes> carver_;
  bool is_sound_;
  FileWindow window_;
};

// Goes through the frames one after the other.
class LogCursor {
 public:
  explicit LogCursor(LogSource& source) : source_(source) {}

  bool InSource() const { return position_ < source_.size(); }
  bool Enter(Segment& segment);

 private:
  LogSource& source_;
  uint64_t position_ = 0;
};
