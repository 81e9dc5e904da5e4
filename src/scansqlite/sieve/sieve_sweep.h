#pragma once

// HOT CODE. The sweep of header_sieve.h, written once over what an instruction set gives:
//
//   struct Level {
//     struct Block;                                        // 64 bytes in registers
//     static Block Load(const uint8_t* bytes);
//     static uint64_t Members(const Block&, const NibbleSet&);  // bytes of the set
//     static uint64_t HighBits(const Block&);              // bytes from 0x80 on
//     static uint64_t OddBytes(const Block&);
//     static uint64_t EqualTo(const Block&, uint8_t byte);
//   };
//
// Only the files of the levels include this, each with its own compiler flags. Everything here is
// in an unnamed namespace, and nothing of the standard library is instantiated, so that the linker
// never puts code for one instruction set where another is expected.

#include "scansqlite/sieve/sieve_levels.h"

namespace {

inline unsigned LeadingOnes(uint64_t word) {
  return ~word == 0 ? 64 : static_cast<unsigned>(__builtin_clzll(~word));
}

inline unsigned TrailingOnes(uint64_t word) {
  return ~word == 0 ? 64 : static_cast<unsigned>(__builtin_ctzll(~word));
}

// Bits of a block with those of the block behind it, so that a shift brings them in.
struct WordPair {
  uint64_t here = 0;
  uint64_t behind = 0;

  uint64_t Shift(unsigned by) const { return here >> by | behind << (64 - by); }
  bool Any() const { return (here | behind) != 0; }
};

// What all columns ask of a block, worked out when the first one does.
template <typename Level>
class BlockWords {
 public:
  BlockWords(const NibbleSet* sets, const uint8_t* bytes)
      : block_(Level::Load(bytes)), sets_(sets) {
    high_ = Level::HighBits(block_);
    odd_ = Level::OddBytes(block_);
  }

  uint64_t Members(unsigned set) {
    if ((known_ >> set & 1U) == 0) {
      words_[set] = Level::Members(block_, sets_[set]);
      known_ |= uint64_t{1} << set;
    }
    return words_[set];
  }
  uint64_t Zeros() const { return Level::EqualTo(block_, 0); }
  uint64_t high() const { return high_; }
  uint64_t odd() const { return odd_; }

  // First bytes of varints of two bytes that are odd, even, of more bytes, and of those that begin
  // with seven 0 bits and so may stand for a small number.
  void JoinWith(uint64_t high_behind, uint64_t odd_behind) {
    const uint64_t next_high = WordPair{high_, high_behind}.Shift(1);
    const uint64_t next_odd = WordPair{odd_, odd_behind}.Shift(1);
    two_odd = high_ & ~next_high & next_odd;
    two_even = high_ & ~next_high & ~next_odd;
    longer = high_ & next_high;
    padded = high_ == 0 ? 0 : Level::EqualTo(block_, 0x80);
  }

  // What the last byte begins is not seen: it may be anything.
  void OpenEnd() {
    const uint64_t last = high_ & uint64_t{1} << 63;
    two_odd |= last;
    two_even |= last;
    longer |= last;
  }

  uint64_t two_odd = 0;
  uint64_t two_even = 0;
  uint64_t longer = 0;
  uint64_t padded = 0;

 private:
  typename Level::Block block_;
  const NibbleSet* sets_;
  uint64_t high_ = 0;
  uint64_t odd_ = 0;
  uint64_t known_ = 0;
  uint64_t words_[SievePlan::kMaxSets];
};

__extension__ using TwoWords = unsigned __int128;

// All shifts by 2 to 9 together, each step doubling how many there are.
inline uint64_t AnyShiftFrom2(const WordPair& alive) {
  TwoWords word = (TwoWords{alive.behind} << 64 | alive.here) >> 2;
  word |= word >> 1;
  word |= word >> 2;
  word |= word >> 4;
  return static_cast<uint64_t>(word);
}

// The same by 3 to 9.
inline uint64_t AnyShiftFrom3(const WordPair& alive) {
  TwoWords word = (TwoWords{alive.behind} << 64 | alive.here) >> 3;
  word |= word >> 1;
  word |= word >> 2;
  word |= word >> 3;
  return static_cast<uint64_t>(word);
}

// One layout's way through the blocks, from the last to the first.
template <typename Level>
class SieveState {
 public:
  // Behind the last block anything may stand.
  void Begin(const HeaderSieve& sieve) {
    sieve_ = &sieve;
    for (size_t k = 0; k < sieve.depth; ++k) behind_[k] = ~uint64_t{0};
    anchor_behind_ = ~uint64_t{0};
    zeros_behind_ = 0;
    alive_behind_ = true;
  }

  uint64_t Step(BlockWords<Level>& block) {
    if (sieve_->depth == 0) return WithoutNullRuns(block, ~uint64_t{0});
    const size_t k = sieve_->depth - 1;
    const SieveColumn& anchor = sieve_->columns[k];
    const uint64_t short_forms = block.Members(anchor.set);
    uint64_t alive = short_forms;
    if (anchor.long_text || anchor.long_blob) {
      alive |= (anchor.long_text ? block.two_odd : 0) | (anchor.long_blob ? block.two_even : 0) |
               block.longer;
    }
    if (block.padded != 0) {
      alive |= block.padded & (WordPair{short_forms, anchor_behind_}.Shift(1) |
                               WordPair{block.padded, ~uint64_t{0}}.Shift(1));
    }
    anchor_behind_ = short_forms;
    if (alive != 0 || alive_behind_) alive = JoinRest(block, k, alive);
    return WithoutNullRuns(block, alive);
  }

 private:
  // The columns in front of the anchor.
  uint64_t JoinRest(BlockWords<Level>& block, size_t k, uint64_t alive) {
    bool any = alive != 0;
    while (k > 0) {
      const WordPair next{alive, behind_[k]};
      behind_[k] = alive;
      --k;
      alive = next.Any() ? Join(block, sieve_->columns[k], next) : 0;
      any = any || alive != 0;
    }
    behind_[0] = alive;
    alive_behind_ = any;
    return alive;
  }

  static uint64_t Join(BlockWords<Level>& block, const SieveColumn& column, const WordPair& next) {
    uint64_t alive = block.Members(column.set) & next.Shift(1);
    if (column.long_text) alive |= block.two_odd & next.Shift(2);
    if (column.long_blob) alive |= block.two_even & next.Shift(2);
    if ((column.long_text || column.long_blob) && block.longer != 0) {
      alive |= block.longer & AnyShiftFrom3(next);
    }
    if (block.padded != 0) alive |= block.padded & AnyShiftFrom2(next);
    return alive;
  }

  // Drops positions from which on `null_run` bytes are 0, as far as the run reaches the end of the
  // block; shorter runs are few positions and go to the full test.
  uint64_t WithoutNullRuns(BlockWords<Level>& block, uint64_t alive) {
    if (sieve_->null_run == 0) return alive;
    const uint64_t zeros = block.Zeros();
    const auto top = LeadingOnes(zeros);
    const uint64_t reach = top + zeros_behind_;
    zeros_behind_ = top == 64 ? zeros_behind_ + 64 : TrailingOnes(zeros);
    if (reach < sieve_->null_run) return alive;
    const uint64_t dropped = reach - sieve_->null_run + 1;  // positions from the run's first one
    const unsigned begin = 64 - top;
    const uint64_t count = dropped < top ? dropped : top;
    if (count == 0) return alive;
    const uint64_t mask = count == 64 ? ~uint64_t{0} : ((uint64_t{1} << count) - 1) << begin;
    return alive & ~mask;
  }

  // Begin sets what is used: a page has few blocks, and most states are none of its.
  const HeaderSieve* sieve_;
  uint64_t behind_[kMaxJoinedColumns];  // what was alive in the block behind, by column
  uint64_t anchor_behind_;              // its members of the anchor's set
  uint64_t zeros_behind_;               // zero bytes from its beginning on
  bool alive_behind_;
};

template <typename Level>
void SweepBlocks(const SieveJob& job) {
  SieveState<Level> states[SievePlan::kMaxSieves];
  for (size_t i = 0; i < job.sieve_count; ++i) states[i].Begin(job.sieves[i]);
  uint64_t high_behind = 0;
  uint64_t odd_behind = 0;
  for (size_t at = job.blocks + 1; at-- > 0;) {
    BlockWords<Level> block(job.sets, job.bytes + at * kSieveBlock);
    block.JoinWith(high_behind, odd_behind);
    if (at == job.blocks) block.OpenEnd();
    high_behind = block.high();
    odd_behind = block.odd();
    for (size_t i = 0; i < job.sieve_count; ++i) {
      const uint64_t alive = states[i].Step(block);
      if (at < job.blocks) job.words[i * job.blocks + at] = alive;
    }
  }
}

}  // namespace
