#pragma once

// ---------------------------------------------------------------------------------------------
// HOT CODE. What stands in this folder runs for every byte of the evidence.
//
// The story. A deleted record can begin anywhere, so every byte position of a page has to be asked
// "could the serial types of a record of this layout begin here?", for every layout. Nearly always
// the answer is no, and this folder finds the no 64 positions at a time.
//
//   1. A column admits some serial types. Those below 128 are one byte of the header, so for a
//      block of 64 bytes a 64-bit word says which bytes could be that column's serial type:
//
//        bytes      .. 00 02 1f 00 05 41 6e 6e 61 ..
//        thread_id   1  1  .  1  .  .  .  .  .        NULL or a small integer
//        address     1  .  1  1  .  1  .  .  1        NULL or a text
//        date        .  .  .  .  1  .  .  .  .        six bytes only
//
//   2. The anchor is the column that fewest bytes satisfy, usually a timestamp. Its word is worked
//      out for all blocks of a page in one tight loop, and most of them are 0: in those blocks
//      nothing else is looked at. In pages without records a second loop drops most of the others,
//      by the byte behind the anchor.
//
//   3. From each anchor the header is followed byte by byte, as long as its bytes fit:
//
//        .. 08 | 02  1f  00 | 05 | 05  01 ..
//          thread_id address person   date   the next two, and more where the anchor says little
//             <----- back ------|      |---->
//
//      A table looked up with the byte next to the anchor says for which layouts that is worth
//      while. Serial types of more bytes are tried at each length that their bits admit.
//
//   4. Many anchors in one block are not followed one by one but joined, from the last column to
//      the first: a position is alive for column k if its byte is in the set of k and the next
//      position is alive for k + 1, 64 positions at a time. So the time has a limit whatever the
//      evidence holds.
//
//        alive[k] = set[k] & (alive[k+1] >> 1)
//
//      A serial type of two bytes (a text longer than 57 bytes) shifts by two; longer forms are
//      rare and let all shifts from 2 to 9 through. What is alive for the first column survives.
//      Anchors of more than one byte, and those at the page's edges, are joined as well.
//
// Survivors are more than the true positions, by a few in a thousand, and never fewer. Each then
// takes the full test in carving/record_test.h.
// ---------------------------------------------------------------------------------------------

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "scansqlite/sieve/serial_type_set.h"

// Positions are sieved in blocks of this many bytes.
inline constexpr size_t kSieveBlock = 64;

// Readable bytes that the sieve needs behind the positions it is asked about: the rest of their
// last block and one block to look ahead.
inline constexpr size_t kSieveOverhang = 2 * kSieveBlock;

// More columns are not joined: the full test takes over soon enough, and the columns in front of an
// anchor lie in its block or in the one in front of that.
inline constexpr size_t kMaxJoinedColumns = 8;

// Bytes that the joined part of a header can take, with varints of nine.
inline constexpr uint64_t kLongestJoin = 9 * kMaxJoinedColumns;

// One column in the joined part of a header.
struct SieveColumn {
  uint8_t set = 0;  // index into SievePlan::sets
  bool long_text = false;
  bool long_blob = false;

  bool operator==(const SieveColumn& other) const = default;
};

// The joined columns of one layout, or of several that agree in them.
struct HeaderSieve {
  SieveColumn columns[kMaxJoinedColumns];  // from the first to the anchor
  size_t depth = 0;                        // how many there are; with none everything survives
  // A bit for each column, those behind the anchor among them. By byte: the columns that have it as
  // serial type, and those whose longer serial types may have it in front of their last byte.
  uint8_t columns_of[256] = {};
  uint8_t columns_behind[256] = {};
  // The bits of the columns behind the anchor that are looked at, too.
  unsigned first_behind = 0;
  unsigned end_behind = 0;
  // A run of at least this many zero bytes is a record of NULLs, which holds no value; 0 when some
  // column refuses NULL, so that no such run survives anyway.
  uint32_t null_run = 0;

  bool operator==(const HeaderSieve& other) const = default;
};

// By the value of a byte: a bit for each sieve.
struct ByteSieves {
  uint64_t of[256] = {};
};

// A set of one-byte serial types as two nibble tables: byte b is in the set when bit (b >> 4) of
// rows[b & 15] is set. Bytes from 128 on are in no set.
struct NibbleSet {
  uint8_t rows[16] = {};
};

// An anchor, and what the bytes around it say of the sieves that have it. All of them are asked
// with one look for each byte. The first of an array is about the byte next to the anchor.
struct SieveAnchor {
  SieveColumn column;
  uint64_t sieves = 0;
  unsigned front_columns = 0;  // of the sieve that has most, in front of the anchor
  unsigned behind_columns = 0;
  // Sieves whose column in that place has the byte as its serial type, or that have none there.
  ByteSieves front[kMaxJoinedColumns - 1];
  ByteSieves behind[kMaxJoinedColumns - 1];
  // Sieves whose column in front may have a longer serial type with this byte before its last one.
  ByteSieves long_front[kMaxJoinedColumns - 1];
  // Bytes below 128 that some sieve has behind the anchor. Others end the search at once.
  NibbleSet next_bytes;
  bool has_few_next_bytes = false;  // so that looking at them first pays
  // All bits when every block has to be looked at, since the anchor has long forms.
  uint64_t any_block = 0;
};

// Everything that one sweep over the bytes looks for.
struct SievePlan {
  static constexpr size_t kMaxSets = 64;
  static constexpr size_t kMaxSieves = 64;

  std::vector<std::array<uint64_t, 2>> short_types;  // of each set, for Add
  std::vector<NibbleSet> sets;
  std::vector<HeaderSieve> sieves;
  std::vector<SieveAnchor> anchors;  // each once

  // Adds a layout given by the sets of its columns (`sets`, an alias left out of the walk by
  // `first`), of which the first `required` have to be there. Gives the index of its sieve, which
  // may be shared; -1 when the plan is full.
  int Add(const std::vector<SerialTypeSet>& sets_of_columns, size_t first, size_t required);
};

// The positions that survive for each sieve of a plan: a word for each block, and a mark for each
// word that may have bits, since most have none.
class SieveResult {
 public:
  void Resize(size_t sieves, size_t blocks);
  size_t blocks() const { return blocks_; }
  size_t sieves() const { return sieves_; }

  uint64_t* Words(size_t sieve) { return words_.data() + sieve * blocks_; }
  const uint64_t* Words(size_t sieve) const { return words_.data() + sieve * blocks_; }
  uint64_t* Marks(size_t sieve) { return marks_.data() + sieve * marks_of_sieve(); }
  const uint64_t* Marks(size_t sieve) const { return marks_.data() + sieve * marks_of_sieve(); }
  size_t marks_of_sieve() const { return (blocks_ + kSieveBlock - 1) / kSieveBlock; }

  // Lets a position survive.
  void Add(size_t sieve, size_t position) {
    const size_t block = position / kSieveBlock;
    Words(sieve)[block] |= uint64_t{1} << position % kSieveBlock;
    Marks(sieve)[block / kSieveBlock] |= uint64_t{1} << block % kSieveBlock;
  }

  // Calls `take` with each survivor of the sieve, upward.
  template <typename Take>
  void ForEach(size_t sieve, const Take& take) const {
    for (size_t i = 0; i < marks_of_sieve(); ++i) {
      for (uint64_t mark = Marks(sieve)[i]; mark != 0; mark &= mark - 1) {
        const size_t block = i * kSieveBlock + static_cast<size_t>(std::countr_zero(mark));
        if (block >= blocks_) return;
        for (uint64_t word = Words(sieve)[block]; word != 0; word &= word - 1) {
          take(block * kSieveBlock + static_cast<size_t>(std::countr_zero(word)));
        }
      }
    }
  }

  // Room for `count` words that nobody keeps.
  uint64_t* Scratch(size_t count);

 private:
  size_t sieves_ = 0;
  size_t blocks_ = 0;
  std::vector<uint64_t> words_;
  std::vector<uint64_t> marks_;
  std::vector<uint64_t> scratch_;
};

// The instruction sets that a sweep can use.
enum class SieveLevel { kWords, kSsse3, kAvx2 };

// The best level of this machine, and all that it has.
SieveLevel BestSieveLevel();
std::vector<SieveLevel> SieveLevels();

// Sets in `result` the positions of [0, count) that survive. `bytes` must be readable up to `count`
// plus kSieveOverhang; what lies there is only looked ahead to.
void Sieve(const SievePlan& plan, SieveLevel level, const uint8_t* bytes, size_t count,
           SieveResult& result);
