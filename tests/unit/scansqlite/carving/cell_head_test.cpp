#include "scansqlite/carving/cell_head.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Join;
using hand_made::Varint;

struct Sizes {
  uint32_t serial_bytes;
  uint32_t data_bytes;
};

CarvedRecord RecordOf(Sizes sizes) {
  CarvedRecord record;
  record.serial_bytes = sizes.serial_bytes;
  record.data_bytes = sizes.data_bytes;
  return record;
}

std::optional<int64_t> RowIdOf(const CarvedRecord& record) {
  return record.has_row_id ? std::optional<int64_t>(record.row_id) : std::nullopt;
}

std::optional<int64_t> Find(const Bytes& bytes, int32_t start, int32_t in_page, Sizes sizes) {
  CarvedRecord record = RecordOf(sizes);
  MemoryBytes memory{bytes.data(), bytes.size()};
  FindCellHead(memory, start, in_page, record);
  hand_made::FileOf file(bytes);
  CarvedRecord of_file = RecordOf(sizes);
  FindCellHead(file.buf(), start, in_page, of_file);
  EXPECT_EQ(RowIdOf(record), RowIdOf(of_file));
  return RowIdOf(record);
}

struct HeadCase {
  const char* name;
  uint64_t row_id;
  Sizes sizes;
  std::optional<int64_t> expected;
};

TEST(FindCellHead, ReadsTheRowIdOfAWholeHead) {
  const HeadCase cases[] = {
      {"one byte each", 5, {3, 40}, 5},
      {"two-byte payload size", 5, {3, 400}, 5},
      {"three-byte payload size", 77, {3, 40000}, 77},
      {"two-byte row id", 300, {3, 40}, 300},
      {"four-byte row id", 200000000, {3, 40}, 200000000},
      {"row id and payload size of several bytes", 2000000, {9, 70000}, 2000000},
      {"two-byte header size", 9, {200, 4000}, 9},
      // Downward varints shift within 32 bits: bits above are folded or lost.
      {"six-byte row id", (uint64_t{1} << 35) + 7, {3, 40}, 15},
      {"row id of 32 bits", 0xFFFFFFFF, {3, 40}, -1},
  };
  for (const HeadCase& c : cases) {
    SCOPED_TRACE(c.name);
    const uint32_t header_size = c.sizes.serial_bytes + (c.sizes.serial_bytes < 127 ? 1 : 2);
    const Bytes head =
        Join({Varint(header_size + c.sizes.data_bytes), Varint(c.row_id), Varint(header_size)});
    const Bytes bytes = Join({Bytes(64, 0), head});
    const auto start = static_cast<int32_t>(bytes.size() - 1);
    EXPECT_EQ(Find(bytes, start, start + 1, c.sizes), c.expected);
  }
}

TEST(FindCellHead, AnOverwrittenHeadIsNotFound) {
  const Bytes bytes = Join({Bytes(60, 0), {0x00, 0x00, 0x00, 0x2C}});
  EXPECT_EQ(Find(bytes, 63, 64, {3, 40}), std::nullopt);
}

TEST(FindCellHead, TheFirstRoundRunsHoweverNearThePageBegins) {
  const Bytes bytes = Join({Bytes(60, 0), {44, 9, 4}});
  for (int32_t in_page = 0; in_page < 6; ++in_page) {
    EXPECT_EQ(Find(bytes, 62, in_page, {3, 40}), 9) << in_page;
  }
}

TEST(FindCellHead, WindowsEndAtTheBeginningOfThePage) {
  // Six bytes of head take a window of six, which only a later position in the page allows.
  const Bytes head = Join({Varint(40004), Varint(300), Varint(4)});
  ASSERT_EQ(head.size(), 6U);
  const Bytes bytes = Join({Bytes(60, 0), head});
  EXPECT_EQ(Find(bytes, 65, 5, {3, 40000}), std::nullopt);
  EXPECT_EQ(Find(bytes, 65, 6, {3, 40000}), std::nullopt);
  EXPECT_EQ(Find(bytes, 65, 7, {3, 40000}), 300);
  EXPECT_EQ(Find(bytes, 65, 60, {3, 40000}), 300);
}

TEST(FindCellHead, BytesBelowTheStartOfTheSourceReadAsZero) {
  EXPECT_EQ(Find({44, 9, 4}, 2, 100, {3, 40}), 9);
  EXPECT_EQ(Find({9, 4}, 1, 100, {3, 40}), std::nullopt);
  EXPECT_EQ(Find({4}, -1, 100, {3, 40}), std::nullopt);
  EXPECT_EQ(Find({4}, INT32_MIN, 100, {3, 40}), std::nullopt);
}

// The same search in its plainest form: every round runs until a stop rule names its end.
struct PlainVarint {
  uint32_t length = 0;
  int64_t value = 0;
};

void PlainBackward(const Bytes& bytes, int64_t start, int32_t limit,
                   std::vector<PlainVarint>& out) {
  const auto byte_at = [&bytes](int64_t at) -> uint32_t {
    return at < 0 || at >= static_cast<int64_t>(bytes.size()) ? 0 : bytes[static_cast<size_t>(at)];
  };
  if (out.size() >= 3) return;
  int32_t consumed = 0;
  int64_t at = start;
  while (consumed < limit) {
    PlainVarint varint;
    uint32_t shift = 0;
    for (;;) {
      ++varint.length;
      ++consumed;
      const uint32_t bits = varint.length < 9 ? byte_at(at) & 0x7FU : byte_at(at);
      varint.value += static_cast<int32_t>(bits << (shift % 32));
      --at;
      shift += 7;
      if (byte_at(at) < 0x80 || varint.length >= 9 || consumed >= limit) break;
    }
    out.push_back(varint);
    if (out.size() >= 3) return;
  }
}

bool PlainTest(const std::vector<PlainVarint>& list, Sizes sizes) {
  const uint32_t header = list[0].length + sizes.serial_bytes;
  const uint32_t payload = header + sizes.data_bytes;
  return list[0].value == int64_t{header} && list[2].value == int64_t{payload};
}

std::optional<int64_t> PlainFind(const Bytes& bytes, int32_t start, int32_t in_page, Sizes sizes) {
  std::optional<int64_t> row_id;
  std::optional<uint32_t> remembered;
  std::vector<PlainVarint> list;
  for (int32_t window = 3;;) {
    list.clear();
    PlainBackward(bytes, start, window, list);
    if (list.size() == 3) {
      if (remembered && *remembered == list[2].length) break;
      if (!remembered) remembered = list[2].length;
      if (PlainTest(list, sizes)) {
        row_id = list[1].value;
        break;
      }
    }
    ++window;
    if (window >= in_page) break;
  }
  PlainBackward(bytes, start, in_page, list);
  if (list.size() == 3 && PlainTest(list, sizes)) row_id = list[1].value;
  return row_id;
}

TEST(FindCellHead, AgreesWithTheSearchThatRunsEveryRound) {
  std::mt19937 random(20240607);
  int found = 0;
  for (int round = 0; round < 60000; ++round) {
    Bytes bytes(40);
    const unsigned high_share = random() % 8;
    for (uint8_t& byte : bytes) {
      byte =
          static_cast<uint8_t>(random() % 8 < high_share ? 0x80 + random() % 128 : random() % 16);
    }
    Sizes sizes{static_cast<uint32_t>(random() % 12), static_cast<uint32_t>(random() % 12)};
    if (random() % 2 == 0) {  // a head that fits, or nearly
      sizes = {static_cast<uint32_t>(1 + random() % 300), static_cast<uint32_t>(random() % 50000)};
      const uint32_t header = sizes.serial_bytes + (sizes.serial_bytes < 127 ? 1 : 2);
      const Bytes head = Join(
          {Varint(header + sizes.data_bytes), Varint(random() >> (random() % 32)), Varint(header)});
      hand_made::Put(bytes, bytes.size() - head.size(), head);
    }
    const int32_t start = static_cast<int32_t>(random() % 4 == 0 ? random() % 40 : 39);
    const auto in_page = static_cast<int32_t>(random() % 44);
    MemoryBytes memory{bytes.data(), bytes.size()};
    CarvedRecord record = RecordOf(sizes);
    FindCellHead(memory, start, in_page, record);
    ASSERT_EQ(RowIdOf(record), PlainFind(bytes, start, in_page, sizes)) << "round " << round;
    found += record.has_row_id ? 1 : 0;
  }
  EXPECT_GT(found, 5000);
}

}  // namespace
