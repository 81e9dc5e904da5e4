// The form without vector instructions. It is built and tested on every machine.

#include <cstring>

#include "scansqlite/sieve/sieve_levels.h"
#include "scansqlite/sieve/sieve_sweep.h"

namespace {

constexpr uint64_t kLowBits = 0x0101010101010101U;

struct WordsLevel {
  struct Block {
    const uint8_t* bytes;
  };

  static Block Load(const uint8_t* bytes) { return {bytes}; }

  static uint64_t Members(const Block& block, const NibbleSet& set) {
    uint64_t word = 0;
    for (unsigned i = 0; i < kSieveBlock; ++i) {
      const unsigned byte = block.bytes[i];
      // Rows have bits 0 to 7, so that a byte from 128 on finds none.
      word |= uint64_t{unsigned{set.rows[byte & 15U]} >> (byte >> 4) & 1U} << i;
    }
    return word;
  }

  static uint64_t HighBits(const Block& block) {
    return Gather(block, [](uint64_t bytes) { return bytes >> 7 & kLowBits; });
  }
  static uint64_t OddBytes(const Block& block) {
    return Gather(block, [](uint64_t bytes) { return bytes & kLowBits; });
  }
  static uint64_t EqualTo(const uint8_t* bytes, uint8_t byte) {
    const uint64_t wanted = kLowBits * byte;
    return Gather({bytes}, [wanted](uint64_t eight) {
      const uint64_t differing = eight ^ wanted;
      const uint64_t low = (differing & ~(kLowBits << 7)) + ~(kLowBits << 7);
      return ~(low | differing) >> 7 & kLowBits;
    });
  }

  static uint64_t Keep(uint64_t places, const uint8_t* bytes, const NibbleSet& set) {
    uint64_t kept = 0;
    for (uint64_t rest = places; rest != 0; rest &= rest - 1) {
      const unsigned byte = bytes[__builtin_ctzll(rest)];
      const bool stands = byte >= 0x80 || (unsigned{set.rows[byte & 15U]} >> (byte >> 4) & 1U) != 0;
      if (stands) kept |= rest & (~rest + 1);
    }
    return kept;
  }

  // Eight bytes at a time, each giving its bit 0, which a multiplication brings together.
  template <typename Pick>
  static uint64_t Gather(const Block& block, Pick pick) {
    uint64_t word = 0;
    for (unsigned i = 0; i < kSieveBlock; i += 8) {
      uint64_t bytes = 0;
      for (unsigned j = 0; j < 8; ++j) bytes |= uint64_t{block.bytes[i + j]} << (8 * j);
      word |= (pick(bytes) * 0x0102040810204080U >> 56) << i;
    }
    return word;
  }
};

}  // namespace

void SieveWords(const SieveJob& job) { SweepBlocks<WordsLevel>(job); }
