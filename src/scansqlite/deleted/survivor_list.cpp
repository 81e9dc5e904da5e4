#include "scansqlite/deleted/survivor_list.h"

namespace {

constexpr size_t kLongestDistance = 10;

}  // namespace

void SurvivorList::Begin() {
  distances_.clear();
  last_ = 0;
  state_ = State::kFilling;
}

void SurvivorList::Finish() {
  if (state_ == State::kFilling) state_ = State::kWhole;
}

void SurvivorList::Add(uint64_t position, SurvivorBudget& budget) {
  if (state_ != State::kFilling) return;
  if (budget.left < kLongestDistance) {
    Release(budget);
    state_ = State::kGivenUp;
    return;
  }
  uint64_t distance = position - last_;
  last_ = position;
  while (distance >= 0x80) {
    distances_.push_back(static_cast<uint8_t>(distance | 0x80));
    distance >>= 7;
    --budget.left;
  }
  distances_.push_back(static_cast<uint8_t>(distance));
  --budget.left;
}

void SurvivorList::Release(SurvivorBudget& budget) {
  budget.left += distances_.size();
  distances_ = {};
}

void SurvivorList::Reader::Next() {
  if (at_ == list_.distances_.size()) {
    at_end_ = true;
    return;
  }
  uint64_t distance = 0;
  unsigned shift = 0;
  uint8_t byte = 0;
  do {
    byte = list_.distances_[at_++];
    distance |= uint64_t{byte & 0x7FU} << shift;
    shift += 7;
  } while ((byte & 0x80U) != 0);
  position_ += distance;
}
