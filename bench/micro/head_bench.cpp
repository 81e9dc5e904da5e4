// The search for the head of a cell in front of its record. Items are records.

#include <benchmark/benchmark.h>

#include "common/sqlitecommon/reverse_varint.h"
#include "micro/micro_source.h"
#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/position_test.h"

namespace bench {

namespace {

struct Candidate {
  uint64_t position = 0;
  CarvedRecord record;
};

std::vector<Candidate> MakeCandidates(MicroSource& source) {
  const CarveLayout& layout = source.live_pass().layout;
  std::vector<Candidate> candidates;
  MemoryBytes bytes{source.bytes().data(), source.size()};
  SerialTypeCells cells;
  for (const uint64_t position : source.Records()) {
    ReadCandidateCells(layout, bytes, position, cells);
    candidates.push_back({position, MeasureRecord(cells)});
  }
  return candidates;
}

void FindHeads(benchmark::State& state, uint64_t off) {
  MicroSource& source = Source("sms", "1");
  const std::vector<Candidate> candidates = MakeCandidates(source);
  ByteView view = source.View();
  for ([[maybe_unused]] auto step : state) {
    for (const Candidate& candidate : candidates) {
      CarvedRecord record = candidate.record;
      FindCellHead(view, static_cast<int32_t>(candidate.position - 2 - off),
                   static_cast<int32_t>(candidate.position % kMicroPage), record);
      benchmark::DoNotOptimize(record);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(candidates.size()) * state.iterations());
}

void FindHead(benchmark::State& state) { FindHeads(state, 0); }

// As if the head had been overwritten.
void MissHead(benchmark::State& state) { FindHeads(state, 1); }

BENCHMARK(FindHead);
BENCHMARK(MissHead);

}  // namespace

}  // namespace bench
