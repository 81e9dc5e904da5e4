#include "storager/saved_keys.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr size_t kFirstSlots = 1024;
constexpr uint32_t kFirstKey = 1;  // in the arena
constexpr size_t kSlotBytes = sizeof(uint8_t) + sizeof(uint32_t);
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

uint64_t HashOf(SavedKeys::Key key) { return HashOf(key.data(), key.size()); }

// Never 0: the lowest bit is always set. The place of a key follows from the low bits of its hash.
uint8_t TagOf(uint64_t hash) { return static_cast<uint8_t>(hash >> 56 | 1U); }

// The length behind a key in the arena: seven bits to a byte, read from the last byte on, which
// holds the lowest; the top bit says that there is another one in front.
constexpr size_t kLongestLength = 5;

void AppendLength(std::vector<uint8_t>& arena, size_t size) {
  uint8_t bytes[kLongestLength];
  size_t count = 0;
  for (; size >= 0x80; size >>= 7) bytes[count++] = static_cast<uint8_t>(size | 0x80U);
  bytes[count++] = static_cast<uint8_t>(size);
  while (count != 0) arena.push_back(bytes[--count]);
}

SavedKeys::Key ReadKeyInFrontOf(const uint8_t* end) {
  size_t size = 0;
  unsigned shift = 0;
  while ((*--end & 0x80U) != 0) {
    size |= size_t{*end & 0x7FU} << shift;
    shift += 7;
  }
  size |= size_t{*end} << shift;
  return {end - size, size};
}

}  // namespace

bool SavedKeys::EndsAt(uint32_t end, Key key) const {
  const Key stored = ReadKeyInFrontOf(arena_.data() + end);
  return stored.size() == key.size() && std::memcmp(stored.data(), key.data(), key.size()) == 0;
}

// The slot of the key, or the empty one where it would go.
size_t SavedKeys::FindSlot(uint64_t hash, Key key) const {
  const size_t mask = tags_.size() - 1;
  const uint8_t tag = TagOf(hash);
  size_t at = hash & mask;
  while (tags_[at] != 0 && !(tags_[at] == tag && EndsAt(ends_[at], key))) at = (at + 1) & mask;
  return at;
}

void SavedKeys::Put(size_t slot, uint64_t hash, uint32_t end) {
  tags_[slot] = TagOf(hash);
  ends_[slot] = end;
}

bool SavedKeys::Contains(Key key) {
  if (count_ == 0 || key.empty()) return false;
  uint32_t end = end_before_;
  if (end <= kFirstKey || !EndsAt(end, key)) {
    const size_t slot = FindSlot(HashOf(key), key);
    if (tags_[slot] == 0) return false;
    end = ends_[slot];
  }
  end_before_ = static_cast<uint32_t>(ReadKeyInFrontOf(arena_.data() + end).data() - arena_.data());
  return true;
}

SavedKeys::Added SavedKeys::Add(Key key) {
  if (key.empty()) return Added::kNoRoom;
  const uint64_t hash = HashOf(key);
  size_t slot = 0;
  if (!tags_.empty()) {
    slot = FindSlot(hash, key);
    if (tags_[slot] != 0) return Added::kWasThere;
  }
  const size_t slots = tags_.size();
  if (!MakeRoom(key.size())) return Added::kNoRoom;
  if (tags_.size() != slots) slot = FindSlot(hash, key);
  arena_.insert(arena_.end(), key.begin(), key.end());
  AppendLength(arena_, key.size());
  Put(slot, hash, static_cast<uint32_t>(arena_.size()));
  ++count_;
  return Added::kIsNew;
}

void SavedKeys::Expect(size_t keys) {
  constexpr size_t kUsualKey = 16;
  const size_t expected = std::min(keys, max_bytes_ / 4 / (kUsualKey + 2 * kSlotBytes));
  if (count_ != 0 || expected < kFirstSlots) return;
  arena_.reserve(expected * kUsualKey);
  FillTable(std::bit_ceil(expected));
}

// Room is made before anything is added, so that a set that is full stays as it is. Growing holds
// the old and the new bytes for a moment, and both count.
bool SavedKeys::MakeRoom(size_t key_bytes) {
  const size_t wanted = arena_.size() + kLongestLength + key_bytes;
  if (wanted > kMaxArena) return false;
  const bool more_slots = (count_ + 1) * 4 > tags_.size() * 3;
  const size_t slots = tags_.empty() ? kFirstSlots : tags_.size() * 2;
  if (more_slots && arena_.capacity() + (tags_.size() + slots) * kSlotBytes > max_bytes_) {
    return false;
  }
  if (wanted > arena_.capacity()) {
    const size_t capacity = arena_.capacity() + arena_.capacity() / 2 + 65536 + key_bytes;
    if (arena_.capacity() + capacity + tags_.size() * kSlotBytes > max_bytes_) return false;
    arena_.reserve(capacity);
  }
  if (more_slots) FillTable(slots);
  return true;
}

// With the keys of the arena.
void SavedKeys::FillTable(size_t slots) {
  tags_.assign(slots, 0);
  ends_.resize(slots);
  const size_t mask = slots - 1;
  for (auto end = static_cast<uint32_t>(arena_.size()); end > kFirstKey;) {
    const Key key = ReadKeyInFrontOf(arena_.data() + end);
    const uint64_t hash = HashOf(key);
    size_t slot = hash & mask;
    while (tags_[slot] != 0) slot = (slot + 1) & mask;
    Put(slot, hash, end);
    end = static_cast<uint32_t>(key.data() - arena_.data());
  }
}

void SavedKeys::ForgetSince(const Mark& mark) {
  if (arena_.size() <= mark.arena) return;
  arena_.resize(mark.arena);
  count_ = mark.count;
  end_before_ = 0;
  FillTable(tags_.size());
}

void SavedKeys::GiveUp() {
  max_bytes_ = 0;
  count_ = 0;
  tags_ = {};
  ends_ = {};
  arena_ = {0};
  end_before_ = 0;
}

size_t SavedKeys::bytes_used() const { return arena_.capacity() + tags_.size() * kSlotBytes; }
