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

  // Makes room for so many usual keys at once, within a quarter of the bound.
  void Expect(size_t keys);

  enum class Added { kIsNew, kWasThere, kNoRoom };

  bool Contains(Key key);
  // A key for which there is no room is not held. The empty key never is.
  Added Add(Key key);

  // What the set holds now, to forget all that came later: when a transaction is rolled back.
  struct Mark {
    size_t count = 0;
    size_t arena = 0;
  };
  Mark mark() const { return {count_, arena_.size()}; }
  void ForgetSince(const Mark& mark);

  // Forgets everything and takes nothing any more: after a failure of the result database nobody
  // knows what it holds.
  void GiveUp();

  size_t size() const { return count_; }
  size_t bytes_used() const;

 private:
  bool EndsAt(uint32_t end, Key key) const;
  size_t FindSlot(uint64_t hash, Key key) const;
  void Put(size_t slot, uint64_t hash, uint32_t end);
  bool MakeRoom(size_t key_bytes);
  void FillTable(size_t slots);

  size_t max_bytes_;
  size_t count_ = 0;
  // The table, in two: seven bits of each key's hash, 0 where there is none, which the processor's
  // cache holds, and where the key ends in the arena, which is only looked at when these agree.
  std::vector<uint8_t> tags_;
  std::vector<uint32_t> ends_;
  std::vector<uint8_t> arena_{0};  // each key with its length behind it
  // Where the key ends that was added in front of the last one found. The cells of a page stand in
  // it in falling order, so that the next one looked for is mostly this.
  uint32_t end_before_ = 0;
};
