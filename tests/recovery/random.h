#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>

namespace recovery {

// Random numbers that are the same with every standard library: the distributions are our own.
class Random {
 public:
  explicit Random(uint64_t seed) : engine_(seed) {}

  uint64_t Bits() { return engine_(); }

  // 0 to below - 1.
  uint64_t Below(uint64_t below) { return below == 0 ? 0 : engine_() % below; }

  size_t Index(size_t size) { return static_cast<size_t>(Below(size)); }

  // first to last, both included.
  int64_t Between(int64_t first, int64_t last) {
    if (last <= first) return first;
    const uint64_t span = static_cast<uint64_t>(last) - static_cast<uint64_t>(first) + 1;
    const uint64_t step = span == 0 ? Bits() : Below(span);
    return static_cast<int64_t>(static_cast<uint64_t>(first) + step);
  }

  // 0 to 1, without 1.
  double Unit() { return static_cast<double>(engine_() >> 11U) * 0x1.0p-53; }

  bool Chance(double probability) { return Unit() < probability; }

  // Few small ones are drawn most of the time: 0 to below - 1, the share growing with `power`.
  size_t Skewed(size_t below, int power) {
    double share = 1.0;
    for (int i = 0; i < power; ++i) share *= Unit();
    return below == 0 ? 0 : static_cast<size_t>(share * static_cast<double>(below));
  }

  // A length between both, each order of magnitude as likely as another.
  size_t Length(size_t least, size_t most);

 private:
  std::mt19937_64 engine_;
};

// Seeds of independent streams out of one seed and a name.
uint64_t MixSeed(uint64_t seed, std::string_view name);

}  // namespace recovery
