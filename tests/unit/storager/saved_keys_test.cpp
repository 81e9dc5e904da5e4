#include "storager/saved_keys.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/dice.h"

namespace {

using Key = std::vector<uint8_t>;

Key RandomKey(Dice& dice) {
  Key key(dice.Chance(95) ? 1 + dice.Below(12) : dice.Pick<size_t>({127, 128, 200, 16384, 40000}));
  for (uint8_t& byte : key) byte = static_cast<uint8_t>(dice.Below(3));
  return key;
}

std::string TextOf(const Key& key) { return {key.begin(), key.end()}; }

TEST(SavedKeysTest, HoldsWhatWasAddedAndNothingElse) {
  for (uint64_t seed = 1; seed <= 5; ++seed) {
    Dice dice(seed);
    SavedKeys keys(size_t{64} << 20);
    std::set<std::string> expected;
    for (size_t i = 0; i < 6000; ++i) {
      const Key key = RandomKey(dice);
      ASSERT_EQ(keys.Contains(key), expected.contains(TextOf(key)));
      if (dice.Chance(50)) continue;
      keys.Add(key);
      expected.insert(TextOf(key));
      ASSERT_TRUE(keys.Contains(key));
      ASSERT_EQ(keys.size(), expected.size());
    }
    for (const std::string& key : expected) {
      ASSERT_TRUE(keys.Contains(Key{key.begin(), key.end()}));
    }
    EXPECT_GT(keys.size(), 1024U) << "the table had to grow";
  }
}

TEST(SavedKeysTest, KeysThatBeginAlikeAreNotTheSame) {
  SavedKeys keys(1 << 20);
  keys.Add(Key{1, 2, 3});
  EXPECT_FALSE(keys.Contains(Key{1, 2}));
  EXPECT_FALSE(keys.Contains(Key{1, 2, 3, 0}));
  EXPECT_FALSE(keys.Contains(Key{}));
  EXPECT_TRUE(keys.Contains(Key{1, 2, 3}));
}

TEST(SavedKeysTest, StopsGrowingBelowItsBound) {
  for (const size_t bound : {size_t{0}, size_t{1000}, size_t{100000}, size_t{1} << 20}) {
    Dice dice(bound);
    SavedKeys keys(bound);
    const size_t empty = keys.bytes_used();
    std::vector<Key> held;
    size_t refused = 0;
    for (uint32_t i = 0; i < 100000; ++i) {
      Key key(20 + dice.Below(30));
      for (size_t k = 0; k < 4; ++k) key[k] = static_cast<uint8_t>(i >> (8 * k));
      keys.Add(key);
      if (keys.Contains(key)) {
        held.push_back(key);
      } else {
        ++refused;
      }
    }
    EXPECT_LE(keys.bytes_used(), std::max(bound, empty));
    EXPECT_GT(refused, 0U);
    EXPECT_EQ(keys.size(), held.size());
    for (const Key& key : held) ASSERT_TRUE(keys.Contains(key));
    EXPECT_EQ(held.empty(), bound < 100000) << bound;
  }
}

TEST(SavedKeysTest, SaysWhetherAKeyIsNew) {
  SavedKeys keys(1 << 20);
  EXPECT_EQ(keys.Add(Key{1}), SavedKeys::Added::kIsNew);
  EXPECT_EQ(keys.Add(Key{2}), SavedKeys::Added::kIsNew);
  EXPECT_EQ(keys.Add(Key{1}), SavedKeys::Added::kWasThere);
  SavedKeys none(0);
  EXPECT_EQ(none.Add(Key{1}), SavedKeys::Added::kNoRoom);
  EXPECT_EQ(none.Add(Key{1}), SavedKeys::Added::kNoRoom);
}

// However they are looked for, also one after the other from the last one on.
TEST(SavedKeysTest, AreFoundInAnyOrder) {
  SavedKeys keys(size_t{64} << 20);
  std::vector<Key> added;
  Dice dice(3);
  for (uint32_t i = 0; i < 5000; ++i) {
    Key key = RandomKey(dice);
    for (size_t k = 0; k < 3; ++k) key.push_back(static_cast<uint8_t>(i >> (8 * k)));
    added.push_back(key);
    ASSERT_EQ(keys.Add(key), SavedKeys::Added::kIsNew) << i;
  }
  const auto expect_found = [&keys](Key key) {
    ASSERT_TRUE(keys.Contains(key));
    key.back() ^= 0x55U;
    ASSERT_FALSE(keys.Contains(key));
  };
  for (auto key = added.rbegin(); key != added.rend(); ++key) expect_found(*key);
  for (const Key& key : added) expect_found(key);
  for (int i = 0; i < 5000; ++i) expect_found(added[dice.Below(added.size())]);
}

TEST(SavedKeysTest, ForgetsWhatCameBehindAMark) {
  for (const size_t more : {size_t{0}, size_t{1}, size_t{3000}}) {
    SavedKeys keys(1 << 22);
    const auto key_of = [](size_t i) {
      return Key{static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), 7};
    };
    for (size_t i = 0; i < 900; ++i) keys.Add(key_of(i));
    const SavedKeys::Mark mark = keys.mark();
    for (size_t i = 900; i < 900 + more; ++i) keys.Add(key_of(i));
    keys.Contains(key_of(899 + more));
    keys.ForgetSince(mark);
    EXPECT_EQ(keys.Contains(key_of(898 + more)), more < 2);
    EXPECT_EQ(keys.size(), 900U);
    for (size_t i = 0; i < 900 + more; ++i) ASSERT_EQ(keys.Contains(key_of(i)), i < 900) << i;
    EXPECT_EQ(keys.Add(key_of(900)), SavedKeys::Added::kIsNew);
    EXPECT_TRUE(keys.Contains(key_of(900)));
  }
}

TEST(SavedKeysTest, AMarkOutlivesGivingUp) {
  SavedKeys keys(1 << 20);
  keys.Add(Key{1});
  const SavedKeys::Mark mark = keys.mark();
  keys.GiveUp();
  keys.ForgetSince(mark);
  EXPECT_FALSE(keys.Contains(Key{1}));
}

TEST(SavedKeysTest, RoomForManyStaysWithinTheBound) {
  for (const size_t bound : {size_t{0}, size_t{100000}, size_t{1} << 22}) {
    for (const size_t expected : {size_t{0}, size_t{5000}, size_t{100000}, SIZE_MAX}) {
      SavedKeys keys(bound);
      const size_t empty = keys.bytes_used();
      keys.Expect(expected);
      EXPECT_LE(keys.bytes_used(), std::max(bound / 2, empty));
      for (uint32_t i = 0; i < 6000; ++i) {
        keys.Add(Key{static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), 1});
      }
      EXPECT_LE(keys.bytes_used(), std::max(bound, empty));
      if (bound < size_t{1} << 22) continue;
      EXPECT_EQ(keys.size(), 6000U);
      EXPECT_TRUE(keys.Contains(Key{1, 1, 1}));
      EXPECT_FALSE(keys.Contains(Key{1, 1, 2}));
    }
  }
}

TEST(SavedKeysTest, AfterGivingUpNothingIsHeldOrTaken) {
  SavedKeys keys(1 << 20);
  keys.Add(Key{1});
  keys.GiveUp();
  EXPECT_FALSE(keys.Contains(Key{1}));
  keys.Add(Key{1});
  EXPECT_FALSE(keys.Contains(Key{1}));
  EXPECT_EQ(keys.size(), 0U);
}

}  // namespace
