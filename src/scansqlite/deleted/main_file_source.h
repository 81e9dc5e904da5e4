#pragma once

#include <memory>

#include "common/sqlitecommon/file_data_buf.h"
#include "scansqlite/carving/byte_view.h"
#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/deleted/file_window.h"
#include "scansqlite/deleted/segment.h"

// The main file as the sweep reads it: large pieces in rising order, with what lies around a page.
// The general test and its overflow chains read through the FileDataBuf.
class MainFileSource {
 public:
  MainFileSource(const DbHeaderInfo& header, FileDataBuf& file);

  // The bytes from `begin` to `end` and some on both sides, readable for the sieve behind `end`.
  // Valid until the next call.
  ByteView View(uint64_t begin, uint64_t end);

  uint8_t ByteAt(uint64_t position) { return *View(position, position + 1).At(position); }

  uint64_t size() const { return file_.file_size(); }
  uint64_t page_bytes() const { return header_.page_size; }
  MainFileCarver& carver() { return carver_; }
  FileDataBuf& file() { return file_; }
  const DbHeaderInfo& header() const { return header_; }
  // False for page sizes that SQLite never writes: such pages overlap in the walk.
  bool HasUsualPages() const;
  SegmentCare CareFor(const Segment& segment) const;

  // The positions of a page of a full sweep when nothing but the page's place is known.
  Segment SweptPart(uint64_t page_begin) const;

 private:
  const DbHeaderInfo& header_;
  FileDataBuf& file_;
  MainFileCarver carver_;
  bool is_sound_;
  FileWindow window_;
};
