#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

// Bytes that all lists of a scan may hold together.
struct SurvivorBudget {
  size_t left = size_t{24} << 20;
};

// Rising positions that one layout still has to look at, found while another layout swept the
// source. Each is kept as its distance to the one before, mostly in one or two bytes.
class SurvivorList {
 public:
  // A list is whole when the sweep that filled it came to its end.
  enum class State { kNone, kFilling, kWhole, kGivenUp };

  State state() const { return state_; }
  void Begin();
  void Finish();

  // Adds a position above all others. A list that the budget has no room for gives up, and its
  // layout sweeps the source by itself.
  void Add(uint64_t position, SurvivorBudget& budget);

  // Frees what the list holds.
  void Release(SurvivorBudget& budget);

  // Reads the positions back, once, from the first to the last.
  class Reader {
   public:
    explicit Reader(const SurvivorList& list) : list_(list) { Next(); }
    bool AtEnd() const { return at_end_; }
    uint64_t position() const { return position_; }
    void Next();

   private:
    const SurvivorList& list_;
    size_t at_ = 0;
    uint64_t position_ = 0;
    bool at_end_ = false;
  };

 private:
  State state_ = State::kNone;
  uint64_t last_ = 0;
  std::deque<uint8_t> distances_;
};
