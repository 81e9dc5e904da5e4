#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

// Random choices that repeat for a seed on every machine: the library's distributions would not.
class Dice {
 public:
  explicit Dice(uint64_t seed) : engine_(seed * 0x9E3779B97F4A7C15U + 1) {}

  uint64_t Word() { return engine_(); }

  // 0 to count - 1.
  size_t Below(size_t count) { return count == 0 ? 0 : engine_() % count; }

  // Both limits included.
  int64_t Between(int64_t low, int64_t high) {
    return low + static_cast<int64_t>(Below(static_cast<size_t>(high - low) + 1));
  }

  bool Chance(int percent) { return Below(100) < static_cast<size_t>(percent); }

  template <typename T>
  T Pick(std::initializer_list<T> values) {
    return *(values.begin() + Below(values.size()));
  }

  template <typename T>
  const T& Pick(const std::vector<T>& values) {
    return values[Below(values.size())];
  }

  char Byte() { return static_cast<char>(engine_()); }

 private:
  std::mt19937_64 engine_;
};
