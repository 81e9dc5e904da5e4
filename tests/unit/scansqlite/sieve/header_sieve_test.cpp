#include "scansqlite/sieve/header_sieve.h"

#include <gtest/gtest.h>

#include <bit>
#include <memory>

#include "scansqlite/carving/position_test.h"
#include "unit/scansqlite/random_layout.h"

namespace {

using random_layout::Bytes;
using random_layout::Layout;

using Bits = std::vector<bool>;

// The survivors of one sieve among `count` positions from `from` on. The bytes are given to the
// sieve in a buffer that ends where it may read no further.
Bits Survivors(const SievePlan& plan, SieveLevel level, const Bytes& bytes, size_t from,
               size_t count, size_t sieve) {
  const size_t blocks = (count + kSieveBlock - 1) / kSieveBlock;
  const Bytes part(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                   bytes.begin() + static_cast<std::ptrdiff_t>(from + count + kSieveOverhang));
  SieveResult result;
  Sieve(plan, level, part.data(), count, result);
  std::vector<size_t> listed;
  result.ForEach(sieve, [&](size_t position) { listed.push_back(position); });
  EXPECT_EQ(result.blocks(), blocks);
  Bits bits;
  std::vector<size_t> marked;
  for (size_t i = 0; i < blocks * kSieveBlock; ++i) {
    const bool is_set = (result.Words(sieve)[i / kSieveBlock] >> (i % kSieveBlock) & 1U) != 0;
    if (is_set) marked.push_back(i);
    if (i < count) {
      bits.push_back(is_set);
    } else {
      EXPECT_FALSE(is_set) << "behind the positions asked for, at " << i;
    }
  }
  EXPECT_EQ(listed, marked);
  return bits;
}

// What the serial types at each position say by themselves.
Bits Candidates(const CarveLayout& layout, const Bytes& bytes, size_t count) {
  MemoryBytes source{bytes.data(), bytes.size()};
  SerialTypeCells cells;
  Bits bits;
  for (size_t position = 0; position < count; ++position) {
    bits.push_back(ReadCandidateCells(layout, source, position, cells) &&
                   HoldsAValue(layout, cells) && CheckFeatureClasses(cells, *layout.features));
  }
  return bits;
}

class HeaderSieveTest : public testing::Test {
 protected:
  // Adds the layout to the plan; -1 when nothing of it is ever accepted.
  int AddLayout(const Layout& layout) {
    const size_t required = RequiredCells(layout.layout);
    if (required > layout.layout.columns.size()) return -1;
    const size_t first = layout.layout.first_column_is_key ? 1 : 0;
    const int sieve =
        plan_.Add(MakeSerialTypeSets(layout.layout, SetDepth::kClasses), first, required);
    EXPECT_GE(sieve, 0);
    return sieve;
  }

  // Every level gives the same, and all candidates are among it.
  void ExpectSurvivors(const Bytes& bytes, const Bits& candidates, size_t from, size_t count,
                       size_t sieve, uint64_t seed) {
    const Bits words = Survivors(plan_, SieveLevel::kWords, bytes, from, count, sieve);
    for (const SieveLevel level : SieveLevels()) {
      ASSERT_EQ(Survivors(plan_, level, bytes, from, count, sieve), words)
          << "seed " << seed << " level " << static_cast<int>(level) << " from " << from;
    }
    for (size_t i = 0; i < count; ++i) {
      ASSERT_TRUE(words[i] || !candidates[from + i])
          << "seed " << seed << " position " << from + i << " of " << from << " + " << count;
      candidates_ += candidates[from + i] ? 1 : 0;
      survivors_ += words[i] ? 1 : 0;
      positions_ += 1;
    }
  }

  SievePlan plan_;
  size_t candidates_ = 0;
  size_t survivors_ = 0;
  size_t positions_ = 0;
};

// Behind the last position, so that no header is cut by the end of the bytes.
constexpr size_t kBehind = 4096;

TEST_F(HeaderSieveTest, NoCandidateIsLostAtAnyLevel) {
  constexpr size_t kCount = 3000;
  for (uint64_t seed = 1; seed <= 150; ++seed) {
    Dice dice(seed);
    plan_ = {};
    const Layout layout(dice, hand_made::Header(1024, 9));
    if (AddLayout(layout) < 0) continue;
    const Bytes bytes = random_layout::BytesWith(dice, layout.layout, kCount + kBehind, 60);
    ExpectSurvivors(bytes, Candidates(layout.layout, bytes, kCount), 0, kCount, 0, seed);
  }
  EXPECT_GT(candidates_, 5000U);
  EXPECT_LT(survivors_, positions_ / 2);
}

TEST_F(HeaderSieveTest, EveryAlignmentAndLength) {
  for (uint64_t seed = 1; seed <= 4; ++seed) {
    Dice dice(500 + seed);
    plan_ = {};
    const Layout layout(dice, hand_made::Header(1024, 9));
    if (AddLayout(layout) < 0) continue;
    const Bytes bytes = random_layout::BytesWith(dice, layout.layout, 300 + kBehind, 50);
    const Bits candidates = Candidates(layout.layout, bytes, 300);
    for (size_t from = 0; from < 70; ++from) {
      for (size_t count = 0; count < 135; ++count) {
        ExpectSurvivors(bytes, candidates, from, count, 0, seed);
        if (HasFatalFailure()) return;
      }
    }
  }
  EXPECT_GT(candidates_, 1000U);
}

TEST_F(HeaderSieveTest, ManyLayoutsInOneSweep) {
  constexpr size_t kCount = 1500;
  Dice dice(77);
  std::vector<std::unique_ptr<Layout>> layouts;
  std::vector<int> sieves;
  while (plan_.sieves.size() < 40 && plan_.sets.size() < 52) {
    layouts.push_back(std::make_unique<Layout>(dice, hand_made::Header(1024, 9)));
    sieves.push_back(AddLayout(*layouts.back()));
  }
  ASSERT_GT(plan_.sieves.size(), 8U);
  for (size_t i = 0; i < layouts.size(); ++i) {
    if (sieves[i] < 0) continue;
    const CarveLayout& layout = layouts[i]->layout;
    const Bytes bytes = random_layout::BytesWith(dice, layout, kCount + kBehind, 40);
    ExpectSurvivors(bytes, Candidates(layout, bytes, kCount), 0, kCount,
                    static_cast<size_t>(sieves[i]), i);
  }
  EXPECT_GT(candidates_, 500U);
}

// Whether a run of zeros begins at the position that is long enough to be dropped. Runs that end
// inside the block of 64 positions are left to the full test.
bool IsInNullRun(const HeaderSieve& sieve, const Bytes& bytes, size_t position, size_t end) {
  size_t at = position;
  while (at < end && bytes[at] == 0) ++at;
  const bool leaves_block = at / kSieveBlock > position / kSieveBlock;
  return sieve.null_run != 0 && leaves_block && at - position >= sieve.null_run;
}

// Where all serial types take one byte, the joined columns say exactly what survives; those behind
// the anchor may drop more.
TEST_F(HeaderSieveTest, ShortSerialTypesAreJoinedExactly) {
  size_t survivors = 0;
  size_t dropped_behind = 0;
  for (uint64_t seed = 1; seed <= 60; ++seed) {
    Dice dice(900 + seed);
    plan_ = {};
    const Layout layout(dice, hand_made::Header(1024, 9));
    if (AddLayout(layout) < 0) continue;
    Bytes bytes = random_layout::BytesWith(dice, layout.layout, 640 + kSieveOverhang, 25);
    for (uint8_t& byte : bytes) byte &= 0x7FU;
    const HeaderSieve& sieve = plan_.sieves[0];
    const size_t read = 640 + kSieveBlock;
    const Bits found = Survivors(plan_, BestSieveLevel(), bytes, 0, 640, 0);
    for (size_t position = 0; position < found.size(); ++position) {
      const auto fits = [&](unsigned from, unsigned to) {
        bool all = true;
        for (unsigned k = from; k < to && position + k < read; ++k) {
          all = all && (sieve.columns_of[bytes[position + k]] >> k & 1U) != 0;
        }
        return all;
      };
      const auto depth = static_cast<unsigned>(sieve.depth);
      const auto end_behind = static_cast<unsigned>(std::bit_width(sieve.end_behind >> 1));
      const bool joined = fits(0, depth) && !IsInNullRun(sieve, bytes, position, read);
      ASSERT_TRUE(joined || !found[position]) << "seed " << seed << " position " << position;
      if (!found[position] && joined) {
        ASSERT_FALSE(fits(depth, end_behind)) << "seed " << seed << " position " << position;
        ++dropped_behind;
      }
      survivors += joined ? 1 : 0;
    }
  }
  EXPECT_GT(dropped_behind, 30U);
  EXPECT_GT(survivors, 2000U);
}

// A layout of `width` columns that take anything.
std::vector<SerialTypeSet> AnythingIn(size_t width) {
  SerialTypeSet any;
  any.short_types = {~uint64_t{0}, ~uint64_t{0}};
  any.long_text = true;
  any.long_blob = true;
  return std::vector<SerialTypeSet>(width, any);
}

// The sieve looks one block ahead, as far as the joined part of a header goes at most.
TEST_F(HeaderSieveTest, TheLongestHeaderReachesTheBlockAhead) {
  std::vector<SerialTypeSet> sets = AnythingIn(8);
  sets[7].short_types = {};
  sets[7].long_blob = false;  // a long text, nothing else
  ASSERT_EQ(plan_.Add(sets, 0, 8), 0);
  ASSERT_EQ(plan_.sieves[0].depth, 8U);
  // Seven varints of nine bytes, and one that ends where the block ahead does.
  Bytes bytes(kSieveBlock + kSieveOverhang, 0x0A);
  for (size_t i = 0; i < 7; ++i) hand_made::Put(bytes, 63 + 9 * i, Bytes(8, 0x81));
  hand_made::Put(bytes, 126, {0x81, 0x01});
  for (const SieveLevel level : SieveLevels()) {
    const Bits found = Survivors(plan_, level, bytes, 0, kSieveBlock, 0);
    EXPECT_TRUE(found[63]);
    EXPECT_FALSE(found[10]);
  }
}

TEST_F(HeaderSieveTest, LongRunsOfNullsAreDropped) {
  ASSERT_EQ(plan_.Add(AnythingIn(5), 0, 5), 0);
  ASSERT_EQ(plan_.sieves[0].null_run, 5U);
  size_t dropped = 0;
  for (const size_t run : {size_t{3}, size_t{4}, size_t{5}, size_t{6}, size_t{63}, size_t{64},
                           size_t{65}, size_t{69}, size_t{130}, size_t{200}}) {
    for (size_t begin = 0; begin < 130; ++begin) {
      Bytes bytes(400 + kSieveOverhang, 1);
      std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), run, uint8_t{0});
      for (const SieveLevel level : SieveLevels()) {
        const Bits found = Survivors(plan_, level, bytes, 0, 400, 0);
        for (size_t position = 0; position < found.size(); ++position) {
          ASSERT_EQ(found[position], !IsInNullRun(plan_.sieves[0], bytes, position, 460))
              << begin << " + " << run << " at " << position;
          dropped += found[position] ? 0 : 1;
        }
      }
    }
  }
  EXPECT_GT(dropped, 50000U);
}

TEST_F(HeaderSieveTest, NullsBehindAnAliasAndInFlexibleTablesAreDropped) {
  EXPECT_EQ(plan_.Add(AnythingIn(5), 1, 5), 0);
  EXPECT_EQ(plan_.sieves[0].null_run, 4U);
  // Cells that may be missing can be NULL as well as any other.
  EXPECT_EQ(plan_.Add(AnythingIn(24), 0, 20), 1);
  EXPECT_EQ(plan_.sieves[1].null_run, 24U);
  std::vector<SerialTypeSet> sets = AnythingIn(6);
  sets[3].short_types[0] &= ~uint64_t{1};  // NULL is refused
  EXPECT_EQ(plan_.Add(sets, 0, 6), 2);
  EXPECT_EQ(plan_.sieves[2].null_run, 0U);
}

TEST_F(HeaderSieveTest, LayoutsThatAgreeUpToTheAnchorShareASieve) {
  std::vector<SerialTypeSet> sets = AnythingIn(6);
  sets[0].short_types = {uint64_t{31} << 5, 0};
  sets[0].long_text = sets[0].long_blob = false;
  sets[1] = sets[0];
  sets[2].short_types = {uint64_t{1} << 5, 0};  // six bytes, nothing else
  sets[2].long_text = sets[2].long_blob = false;
  EXPECT_EQ(plan_.Add(sets, 0, 6), 0);
  sets.resize(9, AnythingIn(1)[0]);
  EXPECT_EQ(plan_.Add(sets, 0, 9), 0);
  sets[1].long_blob = true;
  EXPECT_EQ(plan_.Add(sets, 0, 9), 1);
  EXPECT_EQ(plan_.sieves[0].depth, 3U);
}

// Where the columns up to the anchor say little, those behind it count.
TEST_F(HeaderSieveTest, AWeakAnchorTakesColumnsBehindIt) {
  std::vector<SerialTypeSet> sets = AnythingIn(4);
  sets[0].short_types = {uint64_t{1} << 5, 0};
  sets[0].long_text = sets[0].long_blob = false;
  sets[1].short_types = {uint64_t{1} << 9, 0};
  EXPECT_EQ(plan_.Add(sets, 0, 4), 0);
  EXPECT_EQ(plan_.sieves[0].depth, 1U);
  // The second column is right, of two bytes, wrong.
  Bytes bytes(3 * kSieveBlock + kSieveOverhang, 0x0A);
  hand_made::Put(bytes, 70, {5, 9});
  hand_made::Put(bytes, 80, {5, 0x81, 1});
  hand_made::Put(bytes, 90, {5, 8});
  for (const SieveLevel level : SieveLevels()) {
    const Bits found = Survivors(plan_, level, bytes, 0, 3 * kSieveBlock, 0);
    EXPECT_TRUE(found[70]);
    EXPECT_TRUE(found[80]);
    EXPECT_EQ(std::count(found.begin(), found.end(), true), 2);
  }
}

// More anchors in a block than are followed one by one.
TEST_F(HeaderSieveTest, DenseBlocksAreJoinedTogether) {
  std::vector<SerialTypeSet> sets = AnythingIn(3);
  sets[0].short_types = {uint64_t{1} << 9, 0};
  sets[0].long_text = sets[0].long_blob = false;
  sets[1] = sets[0];
  sets[1].short_types = {uint64_t{1} << 5, 0};
  EXPECT_EQ(plan_.Add(sets, 0, 3), 0);
  for (size_t anchors = 1; anchors <= 20; ++anchors) {
    Bytes bytes(3 * kSieveBlock + kSieveOverhang, 0x0A);
    for (size_t i = 0; i < anchors; ++i) hand_made::Put(bytes, 63 + 3 * i, {9, 5, 0});
    for (const SieveLevel level : SieveLevels()) {
      const Bits found = Survivors(plan_, level, bytes, 0, 3 * kSieveBlock, 0);
      EXPECT_EQ(std::count(found.begin(), found.end(), true), static_cast<long>(anchors));
      EXPECT_TRUE(found[63]);
    }
  }
}

TEST_F(HeaderSieveTest, AFullPlanTakesNoMore) {
  std::vector<SerialTypeSet> sets = AnythingIn(2);
  for (size_t i = 0; i < SievePlan::kMaxSets; ++i) {
    sets[0].short_types = {uint64_t{1} << i, 0};
    sets[0].long_text = sets[0].long_blob = false;
    ASSERT_EQ(plan_.Add(sets, 0, 2), static_cast<int>(i));
  }
  sets[0].short_types = {3, 0};
  EXPECT_EQ(plan_.Add(sets, 0, 2), -1);
  sets[0].short_types = {1, 0};
  EXPECT_EQ(plan_.Add(sets, 0, 2), 0);
  const Bytes bytes(kSieveBlock + kSieveOverhang, 63);
  for (const SieveLevel level : SieveLevels()) {
    EXPECT_EQ(Survivors(plan_, level, bytes, 0, kSieveBlock, 63), Bits(kSieveBlock, true));
    EXPECT_EQ(Survivors(plan_, level, bytes, 0, kSieveBlock, 62), Bits(kSieveBlock, false));
  }
}

}  // namespace
