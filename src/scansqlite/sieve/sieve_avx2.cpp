// 32 bytes at a time, for processors with AVX2.

#include "scansqlite/sieve/sieve_levels.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include "scansqlite/sieve/sieve_sweep.h"

namespace {

struct Avx2Level {
  struct Block {
    __m256i bytes[2];
    __m256i row_bits[2];  // of each byte the bit that stands for its upper half, 0 from 128 on
  };

  static Block Load(const uint8_t* bytes) {
    const __m256i bit_of = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i low_half = _mm256_set1_epi8(15);
    Block block;
    for (int i = 0; i < 2; ++i) {
      block.bytes[i] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes) + i);
      const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(block.bytes[i], 4), low_half);
      block.row_bits[i] = _mm256_shuffle_epi8(bit_of, upper);
    }
    return block;
  }

  // The shuffle takes a byte's lower half by itself, and gives 0 for bytes from 128 on.
  static uint64_t Members(const Block& block, const NibbleSet& set) {
    const __m256i rows =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(set.rows)));
    return ~Gather([&](int i) {
      const __m256i row = _mm256_shuffle_epi8(rows, block.bytes[i]);
      return _mm256_cmpeq_epi8(_mm256_and_si256(row, block.row_bits[i]), _mm256_setzero_si256());
    });
  }

  static uint64_t HighBits(const Block& block) {
    return Gather([&](int i) { return block.bytes[i]; });
  }
  static uint64_t OddBytes(const Block& block) {
    return Gather([&](int i) { return _mm256_slli_epi16(block.bytes[i], 7); });
  }
  static uint64_t EqualTo(const uint8_t* bytes, uint8_t byte) {
    const __m256i wanted = _mm256_set1_epi8(static_cast<char>(byte));
    return Gather([&](int i) {
      const auto* at = reinterpret_cast<const __m256i*>(bytes) + i;
      return _mm256_cmpeq_epi8(_mm256_loadu_si256(at), wanted);
    });
  }

  static uint64_t Keep(uint64_t places, const uint8_t* bytes, const NibbleSet& set) {
    const Block block = Load(bytes);
    return places & (Members(block, set) | HighBits(block));
  }

  // The top bits of the vectors that `pick` gives.
  template <typename Pick>
  static uint64_t Gather(Pick pick) {
    const auto low = static_cast<uint32_t>(_mm256_movemask_epi8(pick(0)));
    const auto high = static_cast<uint32_t>(_mm256_movemask_epi8(pick(1)));
    return uint64_t{high} << 32 | low;
  }
};

}  // namespace

void SieveAvx2(const SieveJob& job) { SweepBlocks<Avx2Level>(job); }

#endif
