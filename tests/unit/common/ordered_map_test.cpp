// The map that keeps the order of the configuration's rows, held against two plain containers.
#include "common/common/ordered_map.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Entries = std::vector<std::pair<std::string, int>>;

Entries EntriesOf(const OrderedMap<int>& map) { return {map.begin(), map.end()}; }

TEST(OrderedMapTest, IsEmptyAtFirst) {
  const OrderedMap<int> map;
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.size(), 0U);
  EXPECT_EQ(map.Find("a"), nullptr);
  EXPECT_EQ(map.begin(), map.end());
}

TEST(OrderedMapTest, KeysComeInTheOrderOfTheirFirstAppearance) {
  OrderedMap<int> map;
  map["zebra"] = 1;
  map.Insert("ant", 2);
  map["Zebra"] = 3;
  map["zebra"] = 4;
  map[""] = 5;
  EXPECT_EQ(EntriesOf(map), (Entries{{"zebra", 4}, {"ant", 2}, {"Zebra", 3}, {"", 5}}));
}

TEST(OrderedMapTest, InsertKeepsTheFirstValue) {
  OrderedMap<int> map;
  map.Insert("a", 1);
  map.Insert("a", 2);
  EXPECT_EQ(EntriesOf(map), (Entries{{"a", 1}}));
}

TEST(OrderedMapTest, AccessMakesADefaultValue) {
  OrderedMap<std::vector<int>> map;
  map["a"].push_back(1);
  map["a"].push_back(2);
  EXPECT_EQ(map["a"], (std::vector<int>{1, 2}));
  EXPECT_TRUE(map["b"].empty());
  EXPECT_EQ(map.size(), 2U);
}

TEST(OrderedMapTest, FoundValueCanBeChanged) {
  OrderedMap<int> map;
  map["a"] = 1;
  ASSERT_NE(map.Find("a"), nullptr);
  *map.Find("a") = 9;
  for (auto& [key, value] : map) value += 1;
  EXPECT_EQ(*std::as_const(map).Find("a"), 10);
  EXPECT_EQ(map.Find("A"), nullptr);
}

TEST(OrderedMapTest, CopyIsIndependent) {
  OrderedMap<int> map;
  map["a"] = 1;
  OrderedMap<int> copy = map;
  copy["a"] = 2;
  copy["b"] = 3;
  EXPECT_EQ(EntriesOf(map), (Entries{{"a", 1}}));
  EXPECT_EQ(EntriesOf(copy), (Entries{{"a", 2}, {"b", 3}}));
}

TEST(OrderedMapTest, BehavesLikeAMapWithAListOfItsKeys) {
  std::mt19937 random(7);
  OrderedMap<int> map;
  std::map<std::string, int> values;
  std::vector<std::string> order;
  for (int round = 0; round < 5000; ++round) {
    const std::string key = std::to_string(random() % 300);
    const int value = static_cast<int>(random() % 1000);
    const bool is_new = !values.contains(key);
    if (is_new) order.push_back(key);
    if (random() % 2 == 0) {
      map[key] = value;
      values[key] = value;
    } else {
      map.Insert(key, value);
      values.emplace(key, value);
    }
  }
  Entries expected;
  for (const std::string& key : order) expected.emplace_back(key, values[key]);
  EXPECT_EQ(EntriesOf(map), expected);
  for (const auto& [key, value] : values) {
    ASSERT_NE(map.Find(key), nullptr);
    EXPECT_EQ(*map.Find(key), value);
  }
}

}  // namespace
