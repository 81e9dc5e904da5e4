#include "recovery/random.h"

namespace recovery {

size_t Random::Length(size_t least, size_t most) {
  if (most <= least) return least;
  size_t top = least == 0 ? 1 : least;
  while (top < most && Chance(0.6)) top *= 2;
  if (top > most) top = most;
  return static_cast<size_t>(Between(static_cast<int64_t>(least), static_cast<int64_t>(top)));
}

uint64_t MixSeed(uint64_t seed, std::string_view name) {
  uint64_t hash = 0xcbf29ce484222325U ^ (seed * 0x9e3779b97f4a7c15U);
  for (const char c : name) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  }
  return hash ^ (hash >> 29U);
}

}  // namespace recovery
