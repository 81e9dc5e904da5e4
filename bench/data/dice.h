#pragma once

#include <cstdint>

namespace bench {

// Random numbers that are the same on every machine.
class Dice {
 public:
  explicit Dice(uint64_t seed) : state_(seed) {}

  uint64_t Word() {
    state_ += 0x9E3779B97F4A7C15U;
    uint64_t word = state_;
    word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9U;
    word = (word ^ (word >> 27)) * 0x94D049BB133111EBU;
    return word ^ (word >> 31);
  }

  // 0 to count - 1.
  uint64_t Below(uint64_t count) { return Word() % count; }

  // Both limits included.
  int64_t Between(int64_t low, int64_t high) {
    return low + static_cast<int64_t>(Below(static_cast<uint64_t>(high - low) + 1));
  }

  bool Chance(int percent) { return Below(100) < static_cast<uint64_t>(percent); }

 private:
  uint64_t state_;
};

}  // namespace bench
