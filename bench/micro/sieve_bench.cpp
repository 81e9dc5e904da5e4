// The sieve by itself, page after page, on bytes that are in memory.

#include <benchmark/benchmark.h>

#include "data/dice.h"
#include "micro/micro_source.h"

namespace bench {

namespace {

constexpr size_t kMadeUpBytes = size_t{4} << 20;

std::vector<uint8_t> Noise() {
  std::vector<uint8_t> bytes(kMadeUpBytes);
  Dice dice(11);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(dice.Word());
  return bytes;
}

// Nearly every byte is from 0x80 on, as in the long forms of serial types.
std::vector<uint8_t> ChineseText() {
  std::vector<uint8_t> bytes;
  Dice dice(12);
  while (bytes.size() < kMadeUpBytes) {
    const auto sign = static_cast<uint32_t>(0x4E00 + dice.Below(0x5000));
    bytes.push_back(static_cast<uint8_t>(0xE0 | sign >> 12));
    bytes.push_back(static_cast<uint8_t>(0x80 | (sign >> 6 & 0x3F)));
    bytes.push_back(static_cast<uint8_t>(0x80 | (sign & 0x3F)));
  }
  return bytes;
}

void SievePages(benchmark::State& state, MicroSource& source) {
  const auto level = static_cast<SieveLevel>(state.range(0));
  if (level > BestSieveLevel()) return state.SkipWithError("not on this processor");
  SieveResult words;
  for ([[maybe_unused]] auto step : state) {
    for (size_t page = 0; page < source.size(); page += kMicroPage) {
      Sieve(source.plan(), level, source.bytes().data() + page + kPageHeader,
            kMicroPage - kPageHeader, words);
      benchmark::DoNotOptimize(words.Words(0));
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(source.size()) * state.iterations());
}

void SieveOneMessageLayout(benchmark::State& state) { SievePages(state, Source("sms", "1")); }
void SieveTwoMessageLayouts(benchmark::State& state) { SievePages(state, Source("sms", "2")); }
void SieveTenMessageLayouts(benchmark::State& state) { SievePages(state, Source("sms", "10")); }
void SieveWideTable(benchmark::State& state) { SievePages(state, Source("wide", "2")); }
void SieveTenTables(benchmark::State& state) { SievePages(state, Source("apps", "10")); }

void SieveNoise(benchmark::State& state) {
  static MicroSource source("sms", "2");
  source.SetBytes(Noise());
  SievePages(state, source);
}

void SieveChineseText(benchmark::State& state) {
  static MicroSource source("sms", "2");
  source.SetBytes(ChineseText());
  SievePages(state, source);
}

void Levels(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("level");
  for (const SieveLevel level : SieveLevels()) {
    benchmark->Arg(static_cast<int>(level));
  }
}

BENCHMARK(SieveOneMessageLayout)->Apply(Levels);
BENCHMARK(SieveTwoMessageLayouts)->Apply(Levels);
BENCHMARK(SieveTenMessageLayouts)->Apply(Levels);
BENCHMARK(SieveWideTable)->Apply(Levels);
BENCHMARK(SieveTenTables)->Apply(Levels);
BENCHMARK(SieveNoise)->Apply(Levels);
BENCHMARK(SieveChineseText)->Apply(Levels);

}  // namespace

}  // namespace bench
