#include "scansqlite/deleted/page_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

const LogLine kWrongPage{
    1, "[GetScanPage] Get a wrong page number, the sqlite file may have been corrupted"};
const LogLine kFull{1,
                    "[GetScanPage] The page list is full, the sqlite file may have been corrupted"};
const LogLine kPastEnd{3,
                       "At file : src/common/sqlitecommon, line : 641, access out of file size."};

std::vector<int32_t> PagesOf(const PageList& list) {
  std::vector<int32_t> pages;
  for (size_t i = 0; i < list.size(); ++i) pages.push_back(list[i]);
  return pages;
}

// An interior page of 512 bytes whose cells stand at its end.
Bytes InteriorPage(const std::vector<uint32_t>& children, uint8_t type = 5) {
  Bytes page(512, 0);
  page[0] = type;
  hand_made::Put(page, 3, hand_made::U16(static_cast<uint32_t>(children.size())));
  hand_made::Put(page, 8, hand_made::U32(2));  // the right-most child
  for (size_t i = 0; i < children.size(); ++i) {
    const size_t cell = 512 - 5 * (i + 1);
    hand_made::Put(page, 12 + 2 * i, hand_made::U16(static_cast<uint32_t>(cell)));
    hand_made::Put(page, cell, hand_made::U32(children[i]));
  }
  return page;
}

struct PageCase {
  const char* name;
  Bytes page;
  bool result;
  std::vector<int32_t> listed;
  size_t wrong_numbers;
};

TEST(GetScanPage, ListsTheChildrenButTheRightMost) {
  const PageCase cases[] = {
      {"leaf", InteriorPage({3}, 13), false, {}, 0},
      {"index interior", InteriorPage({3}, 2), false, {}, 0},
      {"free page", InteriorPage({3}, 0), false, {}, 0},
      {"no cells", InteriorPage({}), true, {}, 0},
      {"three children", InteriorPage({3, 5, 4}), true, {3, 5, 4}, 0},
      {"the highest page", InteriorPage({9}), true, {9}, 0},
      {"one above the highest", InteriorPage({3, 10, 4, 0x7FFFFFFF}), true, {3, 4}, 2},
      {"0 and negative numbers stay",
       InteriorPage({0, 0xFFFFFFFF, 0x80000000}),
       true,
       {0, -1, INT32_MIN},
       0},
      {"itself", InteriorPage({1, 1}), true, {1, 1}, 0},
  };
  for (const PageCase& c : cases) {
    SCOPED_TRACE(c.name);
    hand_made::FileOf file(hand_made::Join({Bytes(512, 0xEE), c.page}));
    PageList list(10);
    LogCapture log;
    EXPECT_EQ(GetScanPage(file.buf(), 512, 9, list), c.result);
    EXPECT_EQ(PagesOf(list), c.listed);
    EXPECT_EQ(log.Lines(), std::vector<LogLine>(c.wrong_numbers, kWrongPage));
  }
}

TEST(GetScanPage, APageBehindTheFileIsNone) {
  hand_made::FileOf file(Bytes(512, 5));
  PageList list(10);
  LogCapture log;
  EXPECT_FALSE(GetScanPage(file.buf(), uint64_t{0} - 512, 9, list));
  EXPECT_EQ(log.Lines(), std::vector<LogLine>{kPastEnd});
}

TEST(GetScanPage, CellsThatLeaveTheFileReadAsZero) {
  Bytes page(14, 0);
  page[0] = 5;
  page[4] = 1;
  hand_made::Put(page, 12, hand_made::U16(500));
  hand_made::FileOf file(page);
  PageList list(10);
  LogCapture log;
  EXPECT_TRUE(GetScanPage(file.buf(), 0, 9, list));
  EXPECT_THAT(PagesOf(list), ElementsAre(0));
  EXPECT_EQ(log.Lines(), std::vector<LogLine>(4, kPastEnd));
}

TEST(PageList, EndsAtAMultipleOfThePagesWithOneLine) {
  LogCapture log;
  PageList list(2);
  for (int32_t page = 0; page < 64 + 2 * 64; ++page) list.Add(page);
  EXPECT_TRUE(list.IsFull());
  EXPECT_THAT(log.Lines(), IsEmpty());
  list.Add(1);
  list.Add(1);
  EXPECT_EQ(list.size(), 192U);
  EXPECT_THAT(log.Lines(), ElementsAre(kFull));
}

TEST(PageList, NeverHoldsMoreThanFourMillionPages) {
  LogCapture log;
  PageList list(0xFFFFFFFF);
  for (int32_t page = 0; page < 4000001; ++page) list.Add(page);
  EXPECT_EQ(list.size(), 4000000U);
  EXPECT_THAT(log.Lines(), ElementsAre(kFull));
}

}  // namespace
