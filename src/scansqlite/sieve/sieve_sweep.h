#pragma once

// HOT CODE. The sweep of header_sieve.h, written once over what an instruction set gives:
//
//   struct Level {
//     struct Block;                                        // 64 bytes in registers
//     static Block Load(const uint8_t* bytes);
//     static uint64_t Members(const Block&, const NibbleSet&);  // bytes of the set
//     static uint64_t HighBits(const Block&);              // bytes from 0x80 on
//     static uint64_t OddBytes(const Block&);
//     static uint64_t EqualTo(const uint8_t* bytes, uint8_t byte);
//     // Those of the places at which a byte of the set stands, or one from 0x80 on.
//     static uint64_t Keep(uint64_t places, const uint8_t* bytes, const NibbleSet&);
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

// What the columns ask of a block, worked out when the first one does.
template <typename Level>
class BlockWords {
 public:
  // Behind the block ahead no header gets that is asked for.
  void Enter(const SieveJob& job, size_t at) {
    const uint8_t* const bytes = job.bytes + at * kSieveBlock;
    sets_ = job.sets;
    behind_ = at == job.blocks ? 0 : bytes[kSieveBlock];
    block_ = Level::Load(bytes);
    known_ = 0;
    has_long_forms_ = false;
  }

  uint64_t Members(unsigned set) {
    if ((known_ >> set & 1U) == 0) {
      words_[set] = Level::Members(block_, sets_[set]);
      known_ |= uint64_t{1} << set;
    }
    return words_[set];
  }

  // First bytes of varints of two bytes that are odd, even, and of those of more bytes.
  struct LongForms {
    uint64_t two_odd = 0;
    uint64_t two_even = 0;
    uint64_t longer = 0;
  };
  const LongForms& long_forms() {
    if (!has_long_forms_) FindLongForms();
    return long_forms_;
  }

 private:
  void FindLongForms() {
    const uint64_t high = Level::HighBits(block_);
    const uint64_t odd = Level::OddBytes(block_);
    const uint64_t next_high = high >> 1 | behind_ >> 7 << 63;
    const uint64_t next_odd = odd >> 1 | behind_ << 63;
    const uint64_t two = high & ~next_high;
    long_forms_ = {two & next_odd, two & ~next_odd, high & next_high};
    has_long_forms_ = true;
  }

  typename Level::Block block_;
  const NibbleSet* sets_;
  uint64_t behind_;  // the byte behind the block
  bool has_long_forms_;
  uint64_t known_;
  LongForms long_forms_;
  uint64_t words_[SievePlan::kMaxSets];
};

// Places of which a column is alive: in a block, and in the one in front of it.
struct Alive {
  uint64_t here = 0;
  uint64_t front = 0;

  // Those of `here` that a column in the block in front can still be joined to: a varint has nine
  // bytes at most.
  static constexpr uint64_t kReachingBits = (uint64_t{1} << 9) - 1;
  bool ReachesFront() const { return (front | (here & kReachingBits)) != 0; }

  uint64_t ShiftHere(unsigned by) const { return here >> by; }
  uint64_t ShiftFront(unsigned by) const { return front >> by | here << (64 - by); }
};

__extension__ using TwoWords = unsigned __int128;

// All shifts by 2 to 9 together, each step doubling how many there are.
inline Alive AnyShift(const Alive& alive) {
  TwoWords word = (TwoWords{alive.here} << 64 | alive.front) >> 2;
  word |= word >> 1;
  word |= word >> 2;
  word |= word >> 4;
  return {static_cast<uint64_t>(word >> 64), static_cast<uint64_t>(word)};
}

template <typename Level>
class Sweep {
 public:
  explicit Sweep(const SieveJob& job) : job_(job), entered_{kNoBlock, kNoBlock} {}

  void Run() {
    FillWords();
    for (size_t i = 0; i < job_.anchor_count; ++i) {
      const SieveAnchor& anchor = job_.anchors[i];
      const size_t count = FindAnchors(anchor);
      for (size_t at = 0; at < count; ++at) {
        const uint64_t block = job_.hot_blocks[at];
        JoinBlock(anchor, block, job_.anchor_words[block]);
      }
    }
    for (size_t i = 0; i < job_.sieve_count; ++i) {
      if (job_.sieves[i].null_run != 0) DropNullRuns(job_.sieves[i].null_run, Words(i));
    }
  }

 private:
  static constexpr size_t kNoBlock = ~size_t{0};

  // Up to so many in a block are followed one by one; more of them are joined together.
  static constexpr int kFewAnchors = 6;

  // So many hot blocks tell whether it pays to look behind the anchors of all.
  static constexpr size_t kProbedBlocks = 8;

  uint64_t* Words(size_t sieve) const { return job_.words + sieve * job_.blocks; }
  uint64_t* Marks(size_t sieve) const { return job_.marks + sieve * job_.marks_of_sieve; }

  void Add(size_t sieve, size_t block, uint64_t bits) const {
    Words(sieve)[block] |= bits;
    Marks(sieve)[block / kSieveBlock] |= uint64_t{1} << block % kSieveBlock;
  }

  // Nothing survives yet but where no column is looked at. Bytes that may begin a long form of a
  // small number are those whose first seven bits are 0.
  void FillWords() {
    const SieveJob job = job_;  // the words that are written could be parts of the other one
    for (size_t at = 0; at <= job.blocks; ++at) {
      job.padded[at] = Level::EqualTo(job.bytes + at * kSieveBlock, 0x80);
    }
    for (size_t i = 0; i < job.sieve_count; ++i) {
      const uint64_t none_or_all = job.sieves[i].depth == 0 ? ~uint64_t{0} : 0;
      uint64_t* const words = Words(i);
      for (size_t at = 0; at < job.blocks; ++at) words[at] = none_or_all;
      uint64_t* const marks = Marks(i);
      for (size_t at = 0; at < job.marks_of_sieve; ++at) marks[at] = none_or_all;
    }
  }

  // Fills the words of the anchor and the list of blocks that are to be looked at; gives how many.
  // Whether a block is one of them cannot be foreseen, so that no jump depends on it.
  size_t FindAnchors(const SieveAnchor& anchor) {
    const SieveJob job = job_;
    const NibbleSet set = job.sets[anchor.column.set];
    size_t count = 0;
    for (size_t at = 0; at <= job.blocks; ++at) {
      const uint64_t places = Level::Members(Level::Load(job.bytes + at * kSieveBlock), set);
      job.anchor_words[at] = places;
      job.hot_blocks[count] = at;
      count += IsHot(anchor, at, places) ? 1 : 0;
    }
    return anchor.has_few_next_bytes ? LookBehind(anchor, count) : count;
  }

  // Drops the anchors behind which no sieve goes on, and the blocks that are left without any. Of
  // random bytes every second block holds an anchor, and few of these stay. Where most of the first
  // ones do, there are records, and the others stay as they are.
  size_t LookBehind(const SieveAnchor& anchor, size_t count) {
    const SieveJob job = job_;
    const NibbleSet next = anchor.next_bytes;
    size_t left = 0;
    for (size_t i = 0; i < count; ++i) {
      const uint64_t at = job.hot_blocks[i];
      if (i == kProbedBlocks && left > kProbedBlocks / 2) {
        for (; i < count; ++i) job.hot_blocks[left++] = job.hot_blocks[i];
        break;
      }
      const uint8_t* const behind = job.bytes + at * kSieveBlock + 1;
      const uint64_t places = Level::Keep(job.anchor_words[at], behind, next);
      job.anchor_words[at] = places;
      job.hot_blocks[left] = at;
      left += IsHot(anchor, at, places) ? 1 : 0;
    }
    return left;
  }

  bool IsHot(const SieveAnchor& anchor, size_t at, uint64_t places) const {
    return (places | PaddedAnchors(at, places) | anchor.any_block) != 0;
  }

  // Bytes that may begin an anchor with a long form of a small number. The byte behind the block
  // may be a serial type or another byte of padding.
  uint64_t PaddedAnchors(size_t at, uint64_t places) const {
    const uint64_t padded = job_.padded[at];
    return padded & ((places | padded) >> 1 | uint64_t{1} << 63);
  }

  BlockWords<Level>& Block(size_t at) {
    BlockWords<Level>& block = blocks_[at % 2];
    if (entered_[at % 2] != at) {
      block.Enter(job_, at);
      entered_[at % 2] = at;
    }
    return block;
  }

  // `places`: the anchors in the block that are serial types of one byte.
  void JoinBlock(const SieveAnchor& anchor, size_t at, uint64_t places) {
    const bool is_edge = at == 0 || at == job_.blocks;
    const bool has_few = __builtin_popcountll(places) <= kFewAnchors && !is_edge;
    if (has_few) {
      for (uint64_t rest = places; rest != 0; rest &= rest - 1) {
        FollowFrom(anchor, job_.bytes + at * kSieveBlock + __builtin_ctzll(rest));
      }
    }
    const uint64_t together = LongAnchors(anchor.column, at, places) | (has_few ? 0 : places);
    if (together == 0) return;
    for (uint64_t sieves = anchor.sieves; sieves != 0; sieves &= sieves - 1) {
      Join(static_cast<size_t>(__builtin_ctzll(sieves)), at, together);
    }
  }

  // Anchors of more than one byte.
  uint64_t LongAnchors(const SieveColumn& column, size_t at, uint64_t places) {
    uint64_t found = 0;
    if (column.long_text || column.long_blob) {
      found = TwoBytes(column, Block(at)) | Block(at).long_forms().longer;
    }
    return found | PaddedAnchors(at, places);
  }

  // Goes from one anchor over the serial types around it, for all its sieves together.
  void FollowFrom(const SieveAnchor& anchor, const uint8_t* place) const {
    uint64_t sieves = anchor.sieves;
    // Up to a serial type of more bytes, behind which the columns are out of step.
    for (unsigned i = 0; i < anchor.behind_columns && place[i + 1] < 0x80; ++i) {
      sieves &= anchor.behind[i].of[place[i + 1]];
    }
    uint64_t open = 0;  // those that may have such a one in front
    const uint8_t* byte = place;
    for (unsigned i = 0; i < anchor.front_columns && sieves != 0; ++i) {
      --byte;
      const uint64_t may_be_longer = sieves & anchor.long_front[i].of[byte[-1]];
      open |= may_be_longer;
      sieves &= anchor.front[i].of[*byte] & ~may_be_longer;
    }
    for (; sieves != 0; sieves &= sieves - 1) {
      const auto index = static_cast<size_t>(__builtin_ctzll(sieves));
      Survive(index, place - job_.sieves[index].depth + 1);
    }
    for (; open != 0; open &= open - 1) {
      const auto index = static_cast<size_t>(__builtin_ctzll(open));
      const HeaderSieve& sieve = job_.sieves[index];
      FollowFront(index, sieve, 1U << (sieve.depth - 1), place);
    }
  }

  void Survive(size_t sieve, const uint8_t* at) const {
    const auto position = static_cast<size_t>(at - job_.bytes);
    Add(sieve, position / kSieveBlock, uint64_t{1} << position % kSieveBlock);
  }

  // The columns below the bit `column` end in front of `end`. Lets the positions survive from which
  // they can begin. There is a block in front of the anchor, and no header is longer than that.
  void FollowFront(size_t index, const HeaderSieve& sieve, unsigned column,
                   const uint8_t* end) const {
    for (; column != 1; --end) {
      column >>= 1;
      if ((sieve.columns_behind[end[-2]] & column) != 0) FollowLong(index, sieve, column, end);
      if ((sieve.columns_of[end[-1]] & column) == 0) return;
    }
    Survive(index, end);
  }

  // The same with a serial type of 2 to 9 bytes in that column. Only the last of nine may be 0x80
  // or more.
  void FollowLong(size_t index, const HeaderSieve& sieve, unsigned bit, const uint8_t* end) const {
    const SieveColumn& column = sieve.columns[__builtin_ctz(bit)];
    const bool is_long = end[-1] % 2 == 0 ? column.long_blob : column.long_text;
    bool is_padded = true;
    for (int length = 2; length <= 9 && end[-length] >= 0x80; ++length) {
      is_padded = is_padded && end[-length] == 0x80;
      if (end[-1] >= 0x80 && length != 9) continue;
      if (is_long || is_padded) FollowFront(index, sieve, bit, end - length);
    }
  }

  // Lets the positions survive whose columns lead to one of the anchors in the block.
  void Join(size_t index, size_t at, uint64_t anchors) {
    const HeaderSieve& sieve = job_.sieves[index];
    Alive alive{anchors, 0};
    size_t k = sieve.depth - 1;
    while (k > 0 && (alive.here | alive.front) != 0) {
      alive = JoinColumn(sieve.columns[--k], at, alive);
    }
    if (at < job_.blocks && alive.here != 0) Add(index, at, alive.here);
    if (at > 0 && alive.front != 0) Add(index, at - 1, alive.front);
  }

  // The places of `column` from which its serial type leads to a place in `next`.
  Alive JoinColumn(const SieveColumn& column, size_t at, const Alive& next) {
    const Alive any = AnyShift(next);
    Alive alive;
    alive.here = JoinIn(at, column, next.ShiftHere(1), next.ShiftHere(2), any.here);
    if (at > 0 && next.ReachesFront()) {
      alive.front = JoinIn(at - 1, column, next.ShiftFront(1), next.ShiftFront(2), any.front);
    }
    return alive;
  }

  // Those of one block; the words are the places one, two and two to nine bytes in front of `next`.
  uint64_t JoinIn(size_t at, const SieveColumn& column, uint64_t by_one, uint64_t by_two,
                  uint64_t by_more) {
    BlockWords<Level>& block = Block(at);
    uint64_t longer = job_.padded[at];  // varints whose length is left open
    uint64_t alive = block.Members(column.set) & by_one;
    if (column.long_text || column.long_blob) {
      alive |= TwoBytes(column, block) & by_two;
      longer |= block.long_forms().longer;
    }
    return alive | (longer & by_more);
  }

  static uint64_t TwoBytes(const SieveColumn& column, BlockWords<Level>& block) {
    const auto& forms = block.long_forms();
    return (column.long_text ? forms.two_odd : 0) | (column.long_blob ? forms.two_even : 0);
  }

  // Drops positions from which on `null_run` bytes are 0, as far as the run reaches the end of the
  // block; shorter runs are few positions and go to the full test.
  void DropNullRuns(uint64_t null_run, uint64_t* words) {
    uint64_t zeros_behind = 0;  // zero bytes from the beginning of the block behind on
    for (size_t at = job_.blocks + 1; at-- > 0;) {
      const uint64_t zeros = Level::EqualTo(job_.bytes + at * kSieveBlock, 0);
      const unsigned top = LeadingOnes(zeros);
      const uint64_t reach = top + zeros_behind;
      zeros_behind = top == 64 ? zeros_behind + 64 : TrailingOnes(zeros);
      if (at == job_.blocks || reach < null_run || top == 0) continue;
      const uint64_t dropped = reach - null_run + 1;  // positions from the run's first one
      const uint64_t count = dropped < top ? dropped : top;
      const uint64_t mask = count == 64 ? ~uint64_t{0} : ((uint64_t{1} << count) - 1) << (64 - top);
      words[at] &= ~mask;
    }
  }

  const SieveJob& job_;
  size_t entered_[2];
  BlockWords<Level> blocks_[2];
};

template <typename Level>
void SweepBlocks(const SieveJob& job) {
  Sweep<Level>(job).Run();
}

}  // namespace
