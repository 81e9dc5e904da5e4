#include "storager/saved_keys.h"

#include <cstring>
#include <utility>

namespace {

constexpr size_t kFirstSlots = 1024;
constexpr size_t kMaxArena = 0xFFFFFFFFU;

// A multiplicative hash over eight bytes at a time.
uint64_t HashOf(const uint8_t* bytes, size_t size) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15U;
  uint64_t hash = size * kFactor;
  while (size != 0) {
    uint64_t word = 0;
    const size_t taken = size < sizeof word ? size : sizeof word;
    std::memcpy(&word, bytes, taken);
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32;
    bytes += taken;
    size -= taken;
  }
  return hash;
}

uint32_t TagOf(uint64_t hash) { return static_cast<uint32_t>(hash >> 32); }

// The length in front of a key in the arena: seven bits to a byte, the lowest first.
constexpr size_t kLongestLength = 5;

struct StoredKey {
  const uint8_t* bytes;
  size_t size;
};

StoredKey ReadStoredKey(const uint8_t* at) {
  size_t size = 0;
  unsigned shift = 0;
  while ((*at & 0x80U) != 0) {
    size |= size_t{*at++ & 0x7FU} << shift;
    shift += 7;
  }
  size |= size_t{*at++} << shift;
  return {at, size};
}

}  // namespace

bool SavedKeys::Matches(const Slot& slot, uint32_t tag, Key key) const {
  if (slot.tag != tag) return false;
  const StoredKey stored = ReadStoredKey(arena_.data() + slot.offset);
  return stored.size == key.size() && std::memcmp(stored.bytes, key.data(), stored.size) == 0;
}

// The slot of the key, or the empty one where it would go.
size_t SavedKeys::FindSlot(uint64_t hash, Key key) const {
  const size_t mask = slots_.size() - 1;
  size_t at = hash & mask;
  while (slots_[at].offset != 0 && !Matches(slots_[at], TagOf(hash), key)) at = (at + 1) & mask;
  return at;
}

bool SavedKeys::Contains(Key key) const {
  if (slots_.empty() || key.empty()) return false;
  return slots_[FindSlot(HashOf(key.data(), key.size()), key)].offset != 0;
}

bool SavedKeys::Add(Key key) {
  if (key.empty()) return true;
  const uint64_t hash = HashOf(key.data(), key.size());
  size_t at = 0;
  if (!slots_.empty()) {
    at = FindSlot(hash, key);
    if (slots_[at].offset != 0) return false;
  }
  const size_t slots = slots_.size();
  if (!MakeRoom(key.size())) return true;
  if (slots_.size() != slots) at = FindSlot(hash, key);
  slots_[at] = {TagOf(hash), static_cast<uint32_t>(arena_.size())};
  size_t size = key.size();
  for (; size >= 0x80; size >>= 7) arena_.push_back(static_cast<uint8_t>(size | 0x80U));
  arena_.push_back(static_cast<uint8_t>(size));
  arena_.insert(arena_.end(), key.begin(), key.end());
  ++count_;
  return true;
}

// Room is made before anything is added, so that a set that is full stays as it is. Growing holds
// the old and the new bytes for a moment, and both count.
bool SavedKeys::MakeRoom(size_t key_bytes) {
  const size_t wanted = arena_.size() + kLongestLength + key_bytes;
  if (wanted > kMaxArena) return false;
  const bool more_slots = (count_ + 1) * 4 > slots_.size() * 3;
  const size_t slots = slots_.empty() ? kFirstSlots : slots_.size() * 2;
  if (more_slots && arena_.capacity() + (slots_.size() + slots) * sizeof(Slot) > max_bytes_) {
    return false;
  }
  if (wanted > arena_.capacity()) {
    const size_t capacity = arena_.capacity() + arena_.capacity() / 2 + 65536 + key_bytes;
    if (arena_.capacity() + capacity + slots_.size() * sizeof(Slot) > max_bytes_) return false;
    arena_.reserve(capacity);
  }
  if (more_slots) Grow();
  return true;
}

void SavedKeys::Grow() {
  std::vector<Slot> old(slots_.empty() ? kFirstSlots : slots_.size() * 2);
  std::swap(old, slots_);
  const size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.offset == 0) continue;
    const StoredKey stored = ReadStoredKey(arena_.data() + slot.offset);
    size_t at = HashOf(stored.bytes, stored.size) & mask;
    while (slots_[at].offset != 0) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

void SavedKeys::GiveUp() {
  max_bytes_ = 0;
  count_ = 0;
  slots_ = {};
  arena_ = {0};
}

size_t SavedKeys::bytes_used() const { return arena_.capacity() + slots_.size() * sizeof(Slot); }
