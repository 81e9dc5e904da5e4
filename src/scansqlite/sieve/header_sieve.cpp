#include "scansqlite/sieve/header_sieve.h"

#include <algorithm>
#include <bit>

#include "scansqlite/sieve/sieve_levels.h"

namespace {

// How often a byte of a database page has each value, in 1/1000, as measured over message
// databases: small integers and lengths stand in every record header and body.
uint32_t DensityOf(uint32_t byte) {
  if (byte == 0) return 120;
  if (byte == 1) return 30;
  if (byte <= 9) return 8;
  if (byte < 32) return 5;
  if (byte == 32 || (byte >= 97 && byte <= 122)) return 16;
  return 4;
}

uint32_t DensityOf(const SerialTypeSet& set) {
  uint32_t sum = 0;
  for (uint32_t type = 0; type < 128; ++type) {
    if (set.HasShort(type)) sum += DensityOf(type);
  }
  if (set.long_text) sum += 60;
  if (set.long_blob) sum += 60;
  return sum;
}

// The share of all positions that may survive for nothing.
constexpr double kFewSurvivors = 0.00002;

// Of 128: as many as a column of numbers or of texts has serial types, and not those of both.
constexpr int kFewNextBytes = 64;

// The column that fewest bytes satisfy; of equals the nearest, which costs least.
size_t FindAnchor(const std::vector<SerialTypeSet>& sets, size_t first, size_t end) {
  size_t anchor = first;
  for (size_t column = first; column < end; ++column) {
    if (DensityOf(sets[column]) < DensityOf(sets[anchor])) anchor = column;
  }
  return anchor;
}

NibbleSet MakeNibbleSet(const std::array<uint64_t, 2>& short_types) {
  NibbleSet set;
  for (uint32_t type = 0; type < 128; ++type) {
    if ((short_types[type >> 6] >> (type & 63U) & 1U) == 0) continue;
    set.rows[type & 15U] = static_cast<uint8_t>(set.rows[type & 15U] | 1U << (type >> 4));
  }
  return set;
}

int IndexOfSet(SievePlan& plan, const std::array<uint64_t, 2>& short_types) {
  const auto at = std::find(plan.short_types.begin(), plan.short_types.end(), short_types);
  if (at != plan.short_types.end()) return static_cast<int>(at - plan.short_types.begin());
  if (plan.sets.size() == SievePlan::kMaxSets) return -1;
  plan.short_types.push_back(short_types);
  plan.sets.push_back(MakeNibbleSet(short_types));
  return static_cast<int>(plan.sets.size() - 1);
}

// A long form of a small number is padded with 0x80.
void NoteBytes(const SerialTypeSet& set, unsigned column, HeaderSieve& sieve) {
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint8_t& own = sieve.columns_of[byte];
    if (byte < 0x80 && set.HasShort(byte)) own = static_cast<uint8_t>(own | column);
    const bool is_behind = byte == 0x80 || (byte > 0x80 && (set.long_text || set.long_blob));
    uint8_t& behind = sieve.columns_behind[byte];
    if (is_behind) behind = static_cast<uint8_t>(behind | column);
  }
}

// The columns of a sieve in their places around the anchor; `own` is the sieve's bit.
void NoteColumns(SieveAnchor& anchor, const HeaderSieve& sieve, uint64_t own) {
  const auto front = static_cast<unsigned>(sieve.depth - 1);
  const auto behind = static_cast<unsigned>(std::bit_width(sieve.end_behind)) - 2 - front;
  for (uint32_t byte = 0; byte < 256; ++byte) {
    for (unsigned i = 0; i < front; ++i) {
      const unsigned column = 1U << (front - 1 - i);
      if ((sieve.columns_of[byte] & column) != 0) anchor.front[i].of[byte] |= own;
      if ((sieve.columns_behind[byte] & column) != 0) anchor.long_front[i].of[byte] |= own;
    }
    for (unsigned i = 0; i < behind; ++i) {
      const unsigned column = sieve.first_behind << i;
      if ((sieve.columns_of[byte] & column) != 0) anchor.behind[i].of[byte] |= own;
    }
  }
  for (uint32_t byte = 0; byte < 256; ++byte) {
    for (unsigned i = front; i < kMaxJoinedColumns - 1; ++i) anchor.front[i].of[byte] |= own;
    for (unsigned i = behind; i < kMaxJoinedColumns - 1; ++i) anchor.behind[i].of[byte] |= own;
  }
  std::array<uint64_t, 2> next_bytes{};
  for (uint32_t byte = 0; byte < 128; ++byte) {
    if (anchor.behind[0].of[byte] != 0) next_bytes[byte >> 6] |= uint64_t{1} << (byte & 63U);
  }
  anchor.next_bytes = MakeNibbleSet(next_bytes);
  anchor.has_few_next_bytes =
      std::popcount(next_bytes[0]) + std::popcount(next_bytes[1]) <= kFewNextBytes;
  anchor.front_columns = std::max(anchor.front_columns, front);
  anchor.behind_columns = std::max(anchor.behind_columns, behind);
}

void NoteSieve(SievePlan& plan, size_t index) {
  const HeaderSieve& sieve = plan.sieves[index];
  if (sieve.depth == 0) return;
  const SieveColumn& column = sieve.columns[sieve.depth - 1];
  auto at = std::find_if(plan.anchors.begin(), plan.anchors.end(),
                         [&](const SieveAnchor& anchor) { return anchor.column == column; });
  if (at == plan.anchors.end()) {
    plan.anchors.emplace_back().column = column;
    at = plan.anchors.end() - 1;
    if (column.long_text || column.long_blob) at->any_block = ~uint64_t{0};
  }
  at->sieves |= uint64_t{1} << index;
  NoteColumns(*at, sieve, uint64_t{1} << index);
}

// One column behind the anchor is looked at, and more while too many positions would survive.
void AddColumnsBehind(const std::vector<SerialTypeSet>& sets, size_t first, size_t end,
                      HeaderSieve& sieve) {
  double share = 1;
  size_t column = first;
  for (; column < first + sieve.depth; ++column) share *= DensityOf(sets[column]) / 1000.0;
  unsigned bit = 1U << sieve.depth;
  sieve.first_behind = bit;
  for (; column < end && (bit == sieve.first_behind || share > kFewSurvivors);
       ++column, bit <<= 1) {
    NoteBytes(sets[column], bit, sieve);
    share *= DensityOf(sets[column]) / 1000.0;
  }
  sieve.end_behind = bit;
}

uint32_t NullRunOf(const std::vector<SerialTypeSet>& sets, size_t first, size_t required) {
  for (size_t column = first; column < required; ++column) {
    if (!sets[column].HasShort(0)) return 0;
  }
  return static_cast<uint32_t>(sets.size() - first);
}

}  // namespace

int SievePlan::Add(const std::vector<SerialTypeSet>& sets_of_columns, size_t first,
                   size_t required) {
  HeaderSieve sieve;
  sieve.null_run = NullRunOf(sets_of_columns, first, required);
  const size_t joined_end = std::min(required, first + kMaxJoinedColumns);
  if (first < joined_end) {
    const size_t anchor = FindAnchor(sets_of_columns, first, joined_end);
    for (size_t column = first; column <= anchor; ++column) {
      const SerialTypeSet& set = sets_of_columns[column];
      const int index = IndexOfSet(*this, set.short_types);
      if (index < 0) return -1;
      NoteBytes(set, 1U << sieve.depth, sieve);
      sieve.columns[sieve.depth++] = {static_cast<uint8_t>(index), set.long_text, set.long_blob};
    }
    AddColumnsBehind(sets_of_columns, first, joined_end, sieve);
  }
  const auto at = std::find(sieves.begin(), sieves.end(), sieve);
  if (at != sieves.end()) return static_cast<int>(at - sieves.begin());
  if (sieves.size() == kMaxSieves) return -1;
  sieves.push_back(sieve);
  NoteSieve(*this, sieves.size() - 1);
  return static_cast<int>(sieves.size() - 1);
}

void SieveResult::Resize(size_t sieves, size_t blocks) {
  sieves_ = sieves;
  blocks_ = blocks;
  words_.resize(sieves * blocks);
  marks_.resize(sieves * marks_of_sieve());
}

uint64_t* SieveResult::Scratch(size_t count) {
  scratch_.resize(count);
  return scratch_.data();
}

SieveLevel BestSieveLevel() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) return SieveLevel::kAvx2;
  if (__builtin_cpu_supports("ssse3")) return SieveLevel::kSsse3;
#endif
  return SieveLevel::kWords;
}

std::vector<SieveLevel> SieveLevels() {
  std::vector<SieveLevel> levels = {SieveLevel::kWords, SieveLevel::kSsse3, SieveLevel::kAvx2};
  const SieveLevel best = BestSieveLevel();
  std::erase_if(levels, [best](SieveLevel level) { return level > best; });
  return levels;
}

namespace {

void SieveBlocks(SieveLevel level, const SieveJob& job) {
#if defined(__x86_64__)
  if (level == SieveLevel::kAvx2) return SieveAvx2(job);
  if (level == SieveLevel::kSsse3) return SieveSsse3(job);
#endif
  SieveWords(job);
}

}  // namespace

void Sieve(const SievePlan& plan, SieveLevel level, const uint8_t* bytes, size_t count,
           SieveResult& result) {
  const size_t blocks = (count + kSieveBlock - 1) / kSieveBlock;
  result.Resize(plan.sieves.size(), blocks);
  if (blocks == 0) return;
  uint64_t* const scratch = result.Scratch(3 * (blocks + 1));
  SieveBlocks(level,
              {plan.sets.data(), plan.sieves.data(), plan.sieves.size(), bytes, blocks,
               result.Words(0), result.Marks(0), result.marks_of_sieve(), plan.anchors.data(),
               plan.anchors.size(), scratch, scratch + blocks + 1, scratch + 2 * (blocks + 1)});
  const size_t tail = count % kSieveBlock;
  if (tail == 0) return;
  for (size_t i = 0; i < plan.sieves.size(); ++i) {
    result.Words(i)[blocks - 1] &= (uint64_t{1} << tail) - 1;
  }
}
