// 16 bytes at a time, for processors with SSSE3.

#include "scansqlite/sieve/sieve_levels.h"

#if defined(__x86_64__)

#include <tmmintrin.h>

#include "scansqlite/sieve/sieve_sweep.h"

namespace {

struct Ssse3Level {
  struct Block {
    __m128i bytes[4];
    __m128i row_bits[4];  // of each byte the bit that stands for its upper half, 0 from 128 on
  };

  static Block Load(const uint8_t* bytes) {
    const __m128i bit_of = _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i low_half = _mm_set1_epi8(15);
    Block block;
    for (int i = 0; i < 4; ++i) {
      block.bytes[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes) + i);
      const __m128i upper = _mm_and_si128(_mm_srli_epi16(block.bytes[i], 4), low_half);
      block.row_bits[i] = _mm_shuffle_epi8(bit_of, upper);
    }
    return block;
  }

  // The shuffle takes a byte's lower half by itself, and gives 0 for bytes from 128 on.
  static uint64_t Members(const Block& block, const NibbleSet& set) {
    const __m128i rows = _mm_loadu_si128(reinterpret_cast<const __m128i*>(set.rows));
    return ~Gather([&](int i) {
      const __m128i row = _mm_shuffle_epi8(rows, block.bytes[i]);
      return _mm_cmpeq_epi8(_mm_and_si128(row, block.row_bits[i]), _mm_setzero_si128());
    });
  }

  static uint64_t HighBits(const Block& block) {
    return Gather([&](int i) { return block.bytes[i]; });
  }
  static uint64_t OddBytes(const Block& block) {
    return Gather([&](int i) { return _mm_slli_epi16(block.bytes[i], 7); });
  }
  static uint64_t EqualTo(const uint8_t* bytes, uint8_t byte) {
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(byte));
    return Gather([&](int i) {
      const auto* at = reinterpret_cast<const __m128i*>(bytes) + i;
      return _mm_cmpeq_epi8(_mm_loadu_si128(at), wanted);
    });
  }

  static uint64_t Keep(uint64_t places, const uint8_t* bytes, const NibbleSet& set) {
    const Block block = Load(bytes);
    return places & (Members(block, set) | HighBits(block));
  }

  // The top bits of the vectors that `pick` gives.
  template <typename Pick>
  static uint64_t Gather(Pick pick) {
    uint64_t word = 0;
    for (int i = 0; i < 4; ++i) {
      const auto bits = static_cast<uint16_t>(_mm_movemask_epi8(pick(i)));
      word |= uint64_t{bits} << (16 * i);
    }
    return word;
  }
};

}  // namespace

void SieveSsse3(const SieveJob& job) { SweepBlocks<Ssse3Level>(job); }

#endif
