#pragma once

#include "scansqlite/carving/byte_view.h"
#include "scansqlite/carving/wal_carver.h"
#include "scansqlite/deleted/segment.h"

// The frames of the log as the sweep reads them. They are in memory as a whole, with room for the
// sieve behind the last one.
class LogSource {
 public:
  explicit LogSource(const WalSource& source);

  ByteView View(uint64_t begin, uint64_t end) const;
  uint8_t ByteAt(uint64_t position) const { return source_.frames.ReadByte(position); }
  uint64_t size() const { return source_.frames.size; }
  uint64_t page_bytes() const;  // of a page with its frame header
  WalCarver& carver() { return carver_; }
  bool HasUsualPages() const;  // as MainFileSource
  SegmentCare CareFor(const Segment& segment) const;
  Segment SweptPart(uint64_t frame_begin) const;

 private:
  WalSource source_;
  WalCarver carver_;
  bool is_sound_;
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
