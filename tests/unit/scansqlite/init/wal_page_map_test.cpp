#include "scansqlite/init/wal_page_map.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "support/log_capture.h"
#include "support/scan_sqlite_probe.h"
#include "unit/scansqlite/hand_made.h"

#define VEXA_PAGE_MAP_SYMBOL \
  "_ZN10ScanSqlite17GetWALFilePageMapENSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

// Links only if the method really has this name.
extern "C" void page_map_by_its_name() __asm__(VEXA_PAGE_MAP_SYMBOL);

bool operator==(const WalFrame& a, const WalFrame& b) {
  return a.salt1 == b.salt1 && a.frame_offset == b.frame_offset;
}

namespace {

using hand_made::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr size_t kPageSize = 512;
constexpr size_t kFrameSize = kPageSize + 24;

Bytes Frame(uint32_t page, uint32_t salt1) {
  Bytes frame(kFrameSize, 0);
  hand_made::Put(frame, 0, hand_made::U32(page));
  hand_made::Put(frame, 8, hand_made::U32(salt1));
  return frame;
}

WalPageMap MapOf(const Bytes& frames) {
  WalPageMap map;
  MapWalFrames(MemoryBytes{frames.data(), frames.size()}, kFrameSize, map);
  return map;
}

TEST(MapWalFrames, TwoFullFramesGetTwoEntries) {
  const WalPageMap map = MapOf(hand_made::Join({Frame(7, 0x11223344), Frame(9, 0xFF000000)}));
  ASSERT_EQ(map.size(), 2U);
  EXPECT_THAT(map.at(7), ElementsAre(WalFrame{0x11223344, 0}));
  EXPECT_THAT(map.at(9), ElementsAre(WalFrame{0xFF000000, kFrameSize}));
}

TEST(MapWalFrames, FramesOfOnePageStandOldestFirst) {
  const WalPageMap map =
      MapOf(hand_made::Join({Frame(3, 1), Frame(3, 2), Frame(4, 2), Frame(3, 1)}));
  EXPECT_THAT(map.at(3),
              ElementsAre(WalFrame{1, 0}, WalFrame{2, kFrameSize}, WalFrame{1, 3 * kFrameSize}));
}

struct PartialCase {
  size_t tail;  // bytes of a third frame
  size_t entries;
};

TEST(MapWalFrames, APartialLastFrameNeedsItsFields) {
  const Bytes whole = hand_made::Join({Frame(1, 1), Frame(1, 1), Frame(1, 1)});
  for (const PartialCase& c : {PartialCase{0, 2}, PartialCase{1, 2}, PartialCase{11, 2},
                               PartialCase{12, 3}, PartialCase{24, 3}, PartialCase{535, 3}}) {
    Bytes frames = whole;
    frames.resize(2 * kFrameSize + c.tail);
    EXPECT_EQ(MapOf(frames).at(1).size(), c.entries) << c.tail;
  }
}

TEST(MapWalFrames, BytesThatAreNoLogGetEntriesLikeAnyOther) {
  const WalPageMap map = MapOf(Bytes(kFrameSize, 0xAB));
  EXPECT_THAT(map.at(0xABABABAB), ElementsAre(WalFrame{0xABABABAB, 0}));
}

struct LogFileCase {
  const char* name;
  size_t size;
  bool result;
  size_t pages;
  size_t lines;
};

TEST(GetWalFilePageMap, GoesByTheSizeOfTheLog) {
  const LogFileCase cases[] = {
      {"empty", 0, false, 0, 1},
      {"one byte", 1, false, 0, 0},
      {"header alone", 32, false, 0, 0},
      {"header and too little of a frame", 40, true, 0, 0},
      {"header and a frame", 32 + kFrameSize, true, 1, 0},
  };
  for (const LogFileCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    hand_made::WriteFile(folder.File("log"), Bytes(c.size, 1));
    ScanSqliteProbe probe{ScanContext{}};
    probe.header().page_size = kPageSize;
    probe.working_wal_path() = folder.File("log");
    LogCapture log;
    EXPECT_EQ(probe.GetWALFilePageMap(folder.File("log")), c.result);
    EXPECT_EQ(probe.wal_page_map().size(), c.pages);
    const std::vector<LogLine> line{
        {3, "Load file error! File : src/scansqlite, Function : " VEXA_PAGE_MAP_SYMBOL
            ", Line : 270, "}};
    EXPECT_EQ(log.Lines(), c.lines == 0 ? std::vector<LogLine>{} : line);
  }
}

TEST(GetWalFilePageMap, WithoutALogTheMapStaysEmpty) {
  ScanSqliteProbe probe{ScanContext{}};
  probe.header().page_size = kPageSize;
  LogCapture log;
  EXPECT_TRUE(probe.GetWALFilePageMap(""));
  EXPECT_TRUE(probe.wal_page_map().empty());
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST(GetWalFilePageMap, TheNameThatTheLogStatesIsTheLinkersName) {
  EXPECT_STREQ(ScanSqlite::kMangledGetWalFilePageMap, VEXA_PAGE_MAP_SYMBOL);
  const ScanSqliteProbe::PageMapMethod method = ScanSqliteProbe::page_map_method();
  void* address = nullptr;  // the first word of a pointer to a method that is not virtual
  std::memcpy(&address, &method, sizeof address);
  EXPECT_EQ(address, reinterpret_cast<void*>(&page_map_by_its_name));
}

}  // namespace
