#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/wal_carver.h"
#include "unit/scansqlite/hand_made.h"

namespace {

using hand_made::Bytes;
using hand_made::Column;

// Counts the hits at all positions. A read that leaves the file and text that cannot be converted
// may throw, and nothing else.
template <typename Carver>
int SweepAll(const CarveLayout& layout, Carver& carver, uint64_t size) {
  int hits = 0;
  SerialTypeCells cells;
  RowValue row;
  RowIdHint hint;
  for (uint64_t position = 0; position < size + 3; ++position) {
    try {
      hits += TestPosition(layout, carver, position, cells, row, hint) ? 1 : 0;
    } catch (const std::out_of_range&) {
    } catch (const std::range_error&) {
    }
  }
  return hits;
}

struct HostileCase {
  uint16_t page_size;
  uint16_t reserved;
  uint32_t encoding;
  size_t columns;
};

TEST(HostileInput, RandomBytesNeverBreakTheCarvers) {
  const HostileCase cases[] = {{1, 0, 1, 2},    {4, 0, 1, 3},     {5, 0, 1, 2},    {20, 16, 1, 3},
                               {36, 32, 2, 3},  {64, 0, 1, 1},    {64, 255, 1, 4}, {64, 0, 2, 3},
                               {128, 8, 1, 20}, {4096, 0, 1, 22}, {65535, 0, 3, 5}};
  std::mt19937 random(31337);
  int hits = 0;
  for (const HostileCase& c : cases) {
    for (int round = 0; round < 6; ++round) {
      Bytes bytes(600);
      for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : random() % 16);
      }
      DbHeaderInfo header = hand_made::Header(
          c.page_size, static_cast<uint32_t>(bytes.size() / c.page_size + 1), c.reserved);
      header.text_encoding = c.encoding;
      SchemaCandidate candidate{true, {}};
      for (size_t i = 0; i < c.columns; ++i) {
        candidate.columns.push_back(
            Column("c", static_cast<int32_t>(8 + i % 2), i == 0 && round % 2 == 0));
      }
      const FeatureMaps features{hand_made::FeaturesOf({hand_made::Feature(0, 2, 7, 0, 100)})};
      const ResultFieldMap fields = hand_made::ResultFields({hand_made::ResultField("a", 2, 0),
                                                             hand_made::ResultField("b", 0, 1),
                                                             hand_made::ResultField("c", 1, 2)});
      CarveLayout layout{&header, round % 3 == 0 ? &features : nullptr,
                         &fields, FirstColumnIsKey(candidate),
                         round,   {}};
      const FeatureMaps none;
      if (layout.features == nullptr) layout.features = &none;
      layout.columns = MakeColumnRules(candidate, *layout.features);
      hand_made::FileOf file(bytes);
      MainFileCarver main_carver(header, file.buf());
      hits += SweepAll(layout, main_carver, bytes.size());
      WalPageMap map;
      MapWalFrames(MemoryBytes{bytes.data(), bytes.size()}, c.page_size + kWalFrameHeaderBytes,
                   map);
      WalCarver<MemoryBytes> wal_carver(
          {&header, {bytes.data(), bytes.size()}, &map, &file.buf(), round % 2 == 0 ? 0U : 16U});
      hits += SweepAll(layout, wal_carver, bytes.size());
    }
  }
  EXPECT_GT(hits, 1000);
}

}  // namespace
