#include "scansqlite/carving/overflow_payload.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <stdexcept>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;

constexpr uint32_t kPageSize = 64;
constexpr uint32_t kChunk = kPageSize - 4;

struct Measures {
  uint32_t header_start;
  uint32_t header_size;
  uint32_t serial_bytes;
  uint32_t data_bytes;
  uint32_t local_size;
};

CarvedRecord RecordOf(const Measures& m) {
  CarvedRecord record;
  record.header_size = m.header_size;
  record.serial_bytes = m.serial_bytes;
  record.data_bytes = m.data_bytes;
  record.payload_size = m.header_size + m.data_bytes;
  record.local_size = m.local_size;
  return record;
}

// A file of pages whose bytes tell their place, with the given next pages in front.
Bytes Pages(const std::vector<uint32_t>& next) {
  Bytes file;
  for (size_t page = 0; page < next.size(); ++page) {
    file = hand_made::Join({file, hand_made::U32(next[page]),
                            hand_made::Pattern(kChunk, static_cast<uint8_t>(page << 6))});
  }
  return file;
}

std::optional<Bytes> Read(const DbHeaderInfo& header, const Bytes& bytes, const Measures& m) {
  hand_made::FileOf file(bytes);
  Bytes out;
  if (!ReadOverflowPayload(header, file.buf(), m.header_start, RecordOf(m), out)) return {};
  return out;
}

// Where page `page` (from 1) has its payload.
Bytes PayloadOf(const Bytes& file, uint32_t page, size_t count) {
  const auto begin = file.begin() + (page - 1) * kPageSize + 4;
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

// A record at offset 10 of page 1: header of 4, 20 bytes of body, then the first page's number.
Bytes WithFirstPage(Bytes file, uint32_t first) {
  hand_made::Put(file, 34, hand_made::U32(first));
  return file;
}

constexpr Measures kRecord{10, 4, 3, 0, 24};

Measures WithData(uint32_t data_bytes) {
  Measures m = kRecord;
  m.data_bytes = data_bytes;
  return m;
}

struct ChainCase {
  const char* name;
  std::vector<uint32_t> next;  // by page
  uint32_t first;
  uint32_t data_bytes;
  std::vector<std::pair<uint32_t, size_t>> parts;  // page and bytes taken; none: a miss
};

TEST(ReadOverflowPayload, FollowsTheChain) {
  const ChainCase cases[] = {
      {"one page", {9, 0, 9, 9}, 2, 50, {{2, 30}}},
      {"one page filled", {9, 0, 9, 9}, 2, 80, {{2, 60}}},
      {"two pages", {9, 3, 0, 9}, 2, 81, {{2, 60}, {3, 1}}},
      {"downward", {9, 0, 2, 9}, 3, 100, {{3, 60}, {2, 20}}},
      {"stops when it has enough, whatever comes next",
       {9, 3, 1000, 9},
       2,
       140,
       {{2, 60}, {3, 60}}},
      {"a loop is read until it gave enough", {9, 2, 9, 9}, 2, 200, {{2, 60}, {2, 60}, {2, 60}}},
      {"first page 0 with bytes missing", {9, 0, 9, 9}, 0, 21, {}},
      {"ends early", {9, 0, 9, 9}, 2, 81, {}},
      {"the last page of the file is refused", {9, 0, 0, 0}, 4, 30, {}},
      {"the last page of the file is refused in the chain", {9, 4, 0, 0}, 2, 100, {}},
      {"behind the file", {9, 0, 9, 9}, 0x80000000, 30, {}},
  };
  for (const ChainCase& c : cases) {
    SCOPED_TRACE(c.name);
    const Bytes file = WithFirstPage(Pages(c.next), c.first);
    const std::optional<Bytes> got =
        Read(hand_made::Header(kPageSize, 4), file, WithData(c.data_bytes));
    ASSERT_EQ(got.has_value(), !c.parts.empty());
    if (c.parts.empty()) continue;
    Bytes expected(file.begin() + 14, file.begin() + 34);
    for (const auto& [page, count] : c.parts) {
      expected = hand_made::Join({expected, PayloadOf(file, page, count)});
    }
    EXPECT_EQ(*got, expected);
  }
}

TEST(ReadOverflowPayload, ALocalPartThatHoldsAllNeedsNoChain) {
  const Bytes file = WithFirstPage(Pages({9, 9, 9, 9}), 77);
  EXPECT_EQ(Read(hand_made::Header(kPageSize, 4), file, WithData(20)),
            Bytes(file.begin() + 14, file.begin() + 34));
}

struct MissCase {
  const char* name;
  Measures measures;
};

TEST(ReadOverflowPayload, RefusesMeasuresThatCannotBe) {
  const MissCase cases[] = {
      {"local part exceeds the body", {10, 4, 3, 19, 24}},
      {"local part ends in the header", {10, 9, 3, 50, 5}},
      {"local part leaves the database", {4 * kPageSize - 27, 4, 3, 50, 24}},
  };
  for (const MissCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(
        Read(hand_made::Header(kPageSize, 4), WithFirstPage(Pages({0, 0, 0, 0}), 2), c.measures),
        std::nullopt);
  }
}

// The header reaches 10 bytes beyond the local part. They are counted, and not stepped over.
TEST(ReadOverflowPayload, SkippedHeaderBytesAreCountedAndNotSteppedOver) {
  const Measures m{10, 36, 34, 50, 24};
  const Bytes file = WithFirstPage(Pages({9, 3, 0, 9}), 2);
  // Page 2 gives min(50 + 10, 60 - 10) = 50 bytes from its first payload byte.
  EXPECT_EQ(Read(hand_made::Header(kPageSize, 4), file, m), PayloadOf(file, 2, 50));
}

TEST(ReadOverflowPayload, ACountBeyondTheBodyIsClampedInTheCopy) {
  const Measures m{10, 36, 34, 30, 24};
  const Bytes file = WithFirstPage(Pages({9, 0, 9, 9}), 2);
  EXPECT_EQ(Read(hand_made::Header(kPageSize, 4), file, m), PayloadOf(file, 2, 30));
}

TEST(ReadOverflowPayload, APageFullOfHeaderIsSkippedWhole) {
  const Measures m{10, 90, 88, 40, 24};  // 64 bytes of header beyond the page
  const Bytes file = WithFirstPage(Pages({9, 3, 0, 9}), 2);
  EXPECT_EQ(Read(hand_made::Header(kPageSize, 4), file, m), PayloadOf(file, 3, 40));
}

TEST(ReadOverflowPayload, PagesWithoutRoomForPayloadAreAMiss) {
  // A page size of 4: each page holds its next number alone, and the chain loops.
  Bytes file(40, 0);
  hand_made::Put(file, 12, hand_made::U32(3));
  hand_made::Put(file, 8, hand_made::U32(3));
  EXPECT_EQ(Read(hand_made::Header(4, 10), file, {0, 2, 1, 30, 12}), std::nullopt);
  EXPECT_EQ(Read(hand_made::Header(4, 10), file, {0, 30, 28, 30, 12}), std::nullopt);
}

TEST(ReadOverflowPayload, AChunkThatWrapsReadsPastTheFileAndThrows) {
  Bytes file(40, 0);
  hand_made::Put(file, 10, hand_made::U32(3));
  EXPECT_THROW(Read(hand_made::Header(1, 40), file, {0, 2, 1, 100, 10}), std::out_of_range);
  EXPECT_EQ(Read(hand_made::Header(1, 40), file, {0, 2, 1, 20, 10})->size(), 20U);
}

TEST(ReadOverflowPayload, ALocalPartPastTheFileThrows) {
  // The header counts more pages than the file has.
  EXPECT_THROW(Read(hand_made::Header(kPageSize, 400), Bytes(64, 1), {50, 4, 3, 400, 24}),
               std::out_of_range);
}

TEST(ReadOverflowPayload, AHugeBodyCostsNothingBeforeTheChainDeliversIt) {
  const Bytes file = WithFirstPage(Pages({9, 0, 9, 9}), 2);
  EXPECT_EQ(Read(hand_made::Header(kPageSize, 4), file, WithData(0xFFFFFFFF)), std::nullopt);
}

// The rule in its plainest form, with the whole buffer allocated first.
std::optional<Bytes> PlainRead(const DbHeaderInfo& header, const Bytes& file, const Measures& m) {
  const auto be32 = [&file](uint64_t at) {
    uint32_t value = 0;
    for (uint64_t i = at; i < at + 4; ++i) value = (value << 8) | (i < file.size() ? file[i] : 0);
    return value;
  };
  Bytes out(m.data_bytes, 0);
  const auto copy = [&](uint64_t from, uint32_t count, uint32_t to) {
    if (from + count > file.size()) throw std::out_of_range("range");
    for (uint32_t i = 0; i < count; ++i) {
      if (uint64_t{to} + i < out.size()) out[to + i] = file[from + i];
    }
  };
  if (m.local_size + 4 + m.header_start > uint32_t{header.page_size} * header.page_count) return {};
  uint32_t skip = 0;
  uint32_t collected = 0;
  if (m.serial_bytes >= m.local_size) {
    skip = m.serial_bytes - m.local_size;
  } else {
    collected = m.local_size - m.header_size;
    if (collected > m.data_bytes) return {};
    copy(m.header_start + m.header_size, collected, 0);
  }
  uint32_t page = be32(m.header_start + m.local_size);
  const uint32_t chunk = header.page_size - 4U;
  for (;;) {
    if (page == 0) return collected >= m.data_bytes ? std::optional<Bytes>(out) : std::nullopt;
    if (collected >= m.data_bytes) return out;
    if (page >= header.page_count) return {};
    const uint64_t offset = uint64_t{page - 1} * header.page_size;
    page = be32(offset);
    if (skip >= 1 && skip >= chunk) {
      skip -= chunk;
      continue;
    }
    const uint32_t count = std::min(m.data_bytes - collected + skip, chunk - skip);
    copy(offset + 4, count, collected);
    collected += count;
    skip = 0;
  }
}

TEST(ReadOverflowPayload, AgreesWithThePlainRule) {
  std::mt19937 engine(4711);
  const auto random = [&engine](uint32_t below) { return static_cast<uint32_t>(engine() % below); };
  int hits = 0;
  for (int round = 0; round < 600; ++round) {
    const uint16_t page_size = static_cast<uint16_t>(5 + random(60));
    const uint32_t pages = 3 + random(6);
    Bytes file(size_t{page_size} * pages);
    for (uint8_t& byte : file) byte = static_cast<uint8_t>(random(256));
    for (uint32_t page = 0; page < pages; ++page) {
      hand_made::Put(file, size_t{page} * page_size, hand_made::U32(random((pages + 1))));
    }
    Measures m{};
    m.serial_bytes = random(40);
    m.header_size = m.serial_bytes + 1;
    m.local_size = random(50);
    m.data_bytes = random(200);
    m.header_start = random(static_cast<uint32_t>(file.size()));
    const size_t first_at = m.header_start + m.local_size;
    if (first_at + 4 <= file.size()) {
      hand_made::Put(file, first_at, hand_made::U32(random((pages + 1))));
    }
    const DbHeaderInfo header = hand_made::Header(page_size, pages);
    std::optional<Bytes> expected;
    try {
      expected = PlainRead(header, file, m);
    } catch (const std::out_of_range&) {
      EXPECT_THROW(Read(header, file, m), std::out_of_range) << "round " << round;
      continue;
    }
    ASSERT_EQ(Read(header, file, m), expected) << "round " << round;
    hits += expected ? 1 : 0;
  }
  EXPECT_GT(hits, 20);
}

}  // namespace
