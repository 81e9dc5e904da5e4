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
