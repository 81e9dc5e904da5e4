#include "scansqlite/deleted/survivor_list.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/dice.h"

namespace {

std::vector<uint64_t> ReadBack(const SurvivorList& list) {
  std::vector<uint64_t> positions;
  for (SurvivorList::Reader reader(list); !reader.AtEnd(); reader.Next()) {
    positions.push_back(reader.position());
  }
  return positions;
}

TEST(SurvivorListTest, PositionsComeBackInOrder) {
  for (uint64_t seed = 1; seed <= 20; ++seed) {
    Dice dice(seed);
    SurvivorBudget budget;
    SurvivorList list;
    list.Begin();
    std::vector<uint64_t> positions;
    uint64_t position = dice.Below(3);
    for (size_t i = 0; i < 3000; ++i) {
      list.Add(position, budget);
      positions.push_back(position);
      position += 1 + (dice.Word() >> (6 + dice.Below(58))) % (uint64_t{1} << 52);
    }
    EXPECT_EQ(list.state(), SurvivorList::State::kFilling);
    list.Finish();
    EXPECT_EQ(list.state(), SurvivorList::State::kWhole);
    EXPECT_EQ(ReadBack(list), positions);
    list.Release(budget);
    EXPECT_EQ(budget.left, SurvivorBudget().left);
    EXPECT_TRUE(ReadBack(list).empty());
  }
}

TEST(SurvivorListTest, NoPositionsAreAWholeListToo) {
  SurvivorList list;
  EXPECT_EQ(list.state(), SurvivorList::State::kNone);
  list.Begin();
  list.Finish();
  EXPECT_EQ(list.state(), SurvivorList::State::kWhole);
  EXPECT_TRUE(ReadBack(list).empty());
}

TEST(SurvivorListTest, AListThatTheBudgetHasNoRoomForGivesUp) {
  SurvivorBudget budget;
  budget.left = 40;
  SurvivorList other;
  other.Begin();
  for (uint64_t position = 0; position < 12; ++position) other.Add(position, budget);
  EXPECT_EQ(budget.left, 28U);
  SurvivorList list;
  list.Begin();
  for (uint64_t position = 0; position < 100; ++position) list.Add(position, budget);
  EXPECT_EQ(list.state(), SurvivorList::State::kGivenUp);
  EXPECT_EQ(budget.left, 28U) << "what it held is free again";
  list.Finish();
  EXPECT_EQ(list.state(), SurvivorList::State::kGivenUp);
  EXPECT_TRUE(ReadBack(list).empty());
  other.Finish();
  EXPECT_EQ(ReadBack(other).size(), 12U);
}

}  // namespace
