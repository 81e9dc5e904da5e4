// What happens at the positions that the sieve lets through. Items are positions.

#include <benchmark/benchmark.h>

#include "micro/micro_source.h"
#include "scansqlite/carving/main_file_carver.h"
#include "scansqlite/carving/position_test.h"

namespace bench {

namespace {

void CountItems(benchmark::State& state, MicroSource& source, size_t items) {
  state.SetItemsProcessed(static_cast<int64_t>(items) * state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(source.size()) * state.iterations());
}

void TestSurvivors(benchmark::State& state, MicroSource& source) {
  const std::vector<uint64_t> positions = source.Survivors();
  RecordTest& test = *source.live_pass().test;
  for ([[maybe_unused]] auto step : state) {
    for (const uint64_t position : positions) {
      benchmark::DoNotOptimize(test.Test(source.View(), position));
    }
  }
  CountItems(state, source, positions.size());
}

void TestMessages(benchmark::State& state) { TestSurvivors(state, Source("sms", "1")); }
void TestWide(benchmark::State& state) { TestSurvivors(state, Source("wide", "2")); }

// The header test is what a plan that is not fast leaves of the test.
void TestHeadersOfMessages(benchmark::State& state) {
  MicroSource& source = Source("sms", "1");
  const std::vector<uint64_t> positions = source.Survivors();
  RecordPlan plan = source.live_pass().plan;
  plan.is_fast = false;
  RecordTest test(plan);
  for ([[maybe_unused]] auto step : state) {
    for (const uint64_t position : positions) {
      benchmark::DoNotOptimize(test.Test(source.View(), position));
    }
  }
  CountItems(state, source, positions.size());
}

// BuildRow speaks of the position that was tested last, so the test is measured with it.
void TestAndBuildRow(benchmark::State& state) {
  MicroSource& source = Source("sms", "1");
  const std::vector<uint64_t> positions = source.Records();
  RecordTest& test = *source.live_pass().test;
  std::vector<BoundValue> row;
  RowIdHint hint;
  for ([[maybe_unused]] auto step : state) {
    for (const uint64_t position : positions) {
      row.clear();
      if (test.Test(source.View(), position) == Verdict::kHit) {
        benchmark::DoNotOptimize(test.BuildRow(test.FindRowId(source.View(), position), row));
      }
    }
  }
  CountItems(state, source, positions.size());
}

// The general test, which the few records take that are not all on their page.
void GeneralTest(benchmark::State& state) {
  MicroSource& source = Source("sms", "1");
  const std::vector<uint64_t> positions = source.Records();
  FileDataBuf file("bench-data/sms-4/source/sample.db");
  const CarveLayout& layout = source.live_pass().layout;
  MainFileCarver carver(*layout.header, file);
  SerialTypeCells cells;
  RowValue row;
  RowIdHint hint;
  for ([[maybe_unused]] auto step : state) {
    for (const uint64_t position : positions) {
      benchmark::DoNotOptimize(TestPosition(layout, carver, position, cells, row, hint));
    }
  }
  CountItems(state, source, positions.size());
}

BENCHMARK(TestHeadersOfMessages);
BENCHMARK(TestMessages);
BENCHMARK(TestWide);
BENCHMARK(TestAndBuildRow);
BENCHMARK(GeneralTest);

}  // namespace

}  // namespace bench
