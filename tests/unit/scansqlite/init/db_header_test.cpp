#include "scansqlite/init/db_header.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

Bytes MakeHeader(uint32_t page_size, uint8_t reserved, uint32_t pages, uint32_t encoding = 1) {
  Bytes header(100, 0);
  hand_made::Put(header, 0, hand_made::Text("SQLite format 3"));
  hand_made::Put(header, 16, hand_made::U16(page_size));
  header[20] = reserved;
  hand_made::Put(header, 28, hand_made::U32(pages));
  hand_made::Put(header, 56, hand_made::U32(encoding));
  return header;
}

TEST(CheckDbHeader, TakesTheMagicOfADatabase) {
  LogCapture log;
  EXPECT_TRUE(CheckDbHeader(MakeHeader(4096, 0, 1)));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(CheckDbHeader, RefusesFewerThanHundredBytes) {
  LogCapture log;
  Bytes header = MakeHeader(4096, 0, 1);
  header.pop_back();
  EXPECT_FALSE(CheckDbHeader(header));
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{3,
                                               "[src/scansqlite], at 307 line, not a valid SQLite "
                                               "DB file."}));
}

TEST(CheckDbHeader, EveryByteOfTheMagicCountsTheClosingZeroToo) {
  for (size_t i = 0; i < 16; ++i) {
    LogCapture log;
    Bytes header = MakeHeader(4096, 0, 1);
    header[i] = static_cast<uint8_t>(header[i] ^ 1U);
    EXPECT_FALSE(CheckDbHeader(header)) << i;
    EXPECT_THAT(log.Lines(), ElementsAre(LogLine{3,
                                                 "[src/scansqlite], at 313 line, not a valid "
                                                 "SQLite DB file."}));
  }
}

struct PageCountCase {
  const char* name;
  uint32_t page_size;
  uint32_t stated;
  size_t file_size;
  uint32_t expected;
};

TEST(GetDbHeaderInfo, PageCountStandsOnlyWhenItAgreesWithTheFile) {
  const PageCountCase cases[] = {
      {"agrees", 4096, 10, 40960, 10},
      {"file is longer by whole pages", 4096, 10, 49152, 12},
      {"a trailing partial page is dropped", 4096, 10, 41060, 10},
      {"header of an old writer states no pages", 512, 0, 2048, 4},
      {"file is shorter", 1024, 10, 2048, 2},
      {"pages of 64 KiB are counted as bytes", 1, 2, 1000, 1000},
      {"file is shorter than a page", 4096, 1, 100, 0},
  };
  for (const PageCountCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    hand_made::WriteFile(folder.File("db"), Bytes(c.file_size, 0));
    DbHeaderInfo info;
    EXPECT_TRUE(GetDbHeaderInfo(folder.File("db"), MakeHeader(c.page_size, 0, c.stated), info));
    EXPECT_EQ(info.page_count, c.expected);
    EXPECT_EQ(info.page_size, c.page_size);
  }
}

struct LimitsCase {
  uint32_t page_size;
  uint8_t reserved;
  uint32_t max_leaf;
  uint32_t min_local;
  uint32_t index_max;
};

TEST(GetDbHeaderInfo, DerivesTheLocalLimits) {
  const LimitsCase cases[] = {
      {4096, 0, 4061, 489, 1002},
      {1024, 0, 989, 103, 230},
      {512, 0, 477, 39, 102},
      {4096, 32, 4029, 485, 993},
      {32768, 0, 32733, 4087, 8198},
      // The subtractions run in 32 bits unsigned, the results keep 16 bits.
      {1, 0, 65502, 232, 231},
  };
  for (const LimitsCase& c : cases) {
    SCOPED_TRACE(c.page_size);
    TempFolder folder;
    hand_made::WriteFile(folder.File("db"), Bytes(100, 0));
    DbHeaderInfo info;
    ASSERT_TRUE(GetDbHeaderInfo(folder.File("db"), MakeHeader(c.page_size, c.reserved, 1), info));
    EXPECT_EQ(info.reserved_size, c.reserved);
    EXPECT_EQ(info.table_max_leaf, c.max_leaf);
    EXPECT_EQ(info.table_min_local, c.min_local);
    EXPECT_EQ(info.index_min_local, c.min_local);
    EXPECT_EQ(info.index_max_local, c.index_max);
  }
}

TEST(GetDbHeaderInfo, TakesTheTextEncodingAsStored) {
  TempFolder folder;
  hand_made::WriteFile(folder.File("db"), Bytes(512, 0));
  for (const uint32_t encoding : {1U, 2U, 3U, 0U, 0xFFFFFFFFU}) {
    DbHeaderInfo info;
    ASSERT_TRUE(GetDbHeaderInfo(folder.File("db"), MakeHeader(512, 0, 1, encoding), info));
    EXPECT_EQ(info.text_encoding, encoding);
  }
}

TEST(GetDbHeaderInfo, AFileThatCannotBeOpenedLeavesTheRecordFilled) {
  TempFolder folder;
  LogCapture log;
  DbHeaderInfo info;
  EXPECT_FALSE(GetDbHeaderInfo(folder.File("absent"), MakeHeader(4096, 8, 77, 2), info));
  EXPECT_EQ(info.page_size, 4096);
  EXPECT_EQ(info.page_count, 77U);
  EXPECT_EQ(info.text_encoding, 2U);
  EXPECT_THAT(log.Lines(),
              ElementsAre(LogLine{3,
                                  "[src/scansqlite], at 414 line, Fail to load file No such file "
                                  "or directory, " +
                                      folder.File("absent")}));
}

TEST(GetDbHeaderInfo, APageSizeOfZeroFailsWithoutALineOfItsOwn) {
  TempFolder folder;
  hand_made::WriteFile(folder.File("db"), Bytes(512, 0));
  LogCapture log;
  DbHeaderInfo info;
  EXPECT_FALSE(GetDbHeaderInfo(folder.File("db"), MakeHeader(0, 0, 1), info));
  EXPECT_THAT(log.Lines(), IsEmpty());
}

}  // namespace
