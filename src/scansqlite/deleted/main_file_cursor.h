#pragma once

#include <cstdint>

#include "scansqlite/deleted/main_file_source.h"
#include "scansqlite/deleted/page_list.h"

// The order in which the pages of the main file are visited: one after the other, or those of a
// small table's list.
class MainFileCursor {
 public:
  // Without a list: page after page.
  explicit MainFileCursor(MainFileSource& source) : MainFileCursor(source, nullptr) {}
  MainFileCursor(MainFileSource& source, PageList* page_list);

  bool InSource() const { return !at_end_ && position_ < source_.size(); }

  // Takes the next page; false when it was skipped or when a list came to its end.
  bool Enter(Segment& segment);

 private:
  bool EnterListedPage();

  MainFileSource& source_;
  PageList* page_list_;
  uint64_t position_;
  uint64_t next_page_index_ = 0;
  bool at_end_ = false;
};
