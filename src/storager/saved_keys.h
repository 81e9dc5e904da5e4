#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// The unique keys that the result already holds, byte for byte. A carved copy of a row that stands
// there is dropped without asking SQLite, which takes much longer to refuse it. The set stops
// growing before it passes its bound; keys that it does not hold are simply asked for.
class SavedKeys {
 public:
  explicit SavedKeys(size_t max_bytes) : max_bytes_(max_bytes) {}

  using Key = std::span<const uint8_t>;

  bool Contains(Key key) const;
  // False when the set holds the key already.
  bool Add(Key key);

  // Forgets everything and takes nothing any more: after a failure of the result database nobody
  // knows what it holds.
  void GiveUp();

  size_t size() const { return count_; }
  size_t bytes_used() const;

 private:
  // A slot is empty when its offset is 0; the arena's first byte is never a key's.
  struct Slot {
    uint32_t tag = 0;
    uint32_t offset = 0;
  };

  bool Matches(const Slot& slot, uint32_t tag, Key key) const;
  size_t FindSlot(uint64_t hash, Key key) const;
  bool MakeRoom(size_t key_bytes);
  void Grow();

  size_t max_bytes_;
  size_t count_ = 0;
  std::vector<Slot> slots_;
  std::vector<uint8_t> arena_{0};  // each key behind its length
};
