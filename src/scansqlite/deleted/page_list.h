#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"

// The pages of a small table, growing while they are walked. A damaged tree can list its own
// ancestors without end, so the list has a size that it does not pass.
class PageList {
 public:
  explicit PageList(uint32_t page_count);

  // Adds the page, or leaves it out and logs that once when the list is full.
  void Add(int32_t page);

  bool IsFull() const { return pages_.size() >= capacity_; }
  size_t size() const { return pages_.size(); }
  int32_t operator[](size_t index) const { return pages_[index]; }

 private:
  size_t capacity_;
  bool reported_ = false;
  std::vector<int32_t> pages_;
};

// Appends the children of the interior table page at `offset` to the list, all but the right-most.
// Page numbers above `highest_page` are logged and left out. False when the page is no interior
// table page.
// https://www.sqlite.org/fileformat2.html#b_tree_pages
//
//   offset  width  meaning
//        0      1  page type, 5
//        3      2  number of cells
//        8      4  right-most child
//       12   2 each  cell pointers; a cell starts with its child's page number
bool GetScanPage(FileDataBuf& file, uint64_t offset, int32_t highest_page, PageList& page_list);
