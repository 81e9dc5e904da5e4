// What becomes of rows: the set of saved keys, the insert, the refusal. Items are rows.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "micro/micro_source.h"
#include "storager/column_lists.h"
#include "storager/row_sink.h"
#include "storager/storager.h"

namespace bench {

namespace {

constexpr size_t kKeys = 200000;
constexpr size_t kRows = 20000;
constexpr size_t kReadBuffer = size_t{4} << 20;

std::vector<std::vector<uint8_t>> MakeKeys() {
  std::vector<std::vector<uint8_t>> keys(kKeys, std::vector<uint8_t>(31, 7));
  for (size_t i = 0; i < kKeys; ++i) std::memcpy(keys[i].data() + 8, &i, sizeof i);
  return keys;
}

void AddKeys(benchmark::State& state) {
  const std::vector<std::vector<uint8_t>> keys = MakeKeys();
  for ([[maybe_unused]] auto step : state) {
    SavedKeys saved(size_t{40} << 20);
    for (const auto& key : keys) saved.Add(key);
    benchmark::DoNotOptimize(saved.size());
  }
  state.SetItemsProcessed(static_cast<int64_t>(kKeys) * state.iterations());
}

void FindKeys(benchmark::State& state) {
  const std::vector<std::vector<uint8_t>> keys = MakeKeys();
  SavedKeys saved(size_t{40} << 20);
  for (const auto& key : keys) saved.Add(key);
  for ([[maybe_unused]] auto step : state) {
    for (const auto& key : keys) benchmark::DoNotOptimize(saved.Contains(key));
  }
  state.SetItemsProcessed(static_cast<int64_t>(kKeys) * state.iterations());
}

// Rows of the message table, one value behind the other, and where they go.
class Rows {
 public:
  Rows() : fields_(*Source("sms", "1").table().fields) {
    MicroSource& source = Source("sms", "1");
    RecordTest& test = *source.live_pass().test;
    RowIdHint hint;
    for (const uint64_t position : source.Records()) {
      if (count_ == kRows) break;
      if (test.Test(source.View(), position) != Verdict::kHit) continue;
      if (test.BuildRow(test.FindRowId(source.View(), position), values_)) ++count_;
    }
  }

  void Open(const std::string& path) {
    insert_.Finalize();
    storager_ = Storager::Create(path);
    NeedQueryTables tables;
    tables["sms"] = fields_;
    storager_->CreateResultTables(tables);
    insert_.Prepare(storager_->handle(), MakeInsertSql("sms", fields_));
    storager_->Execute("BEGIN");
  }

  void Save(SavedKeys* keys) {
    RowSink sink(fields_, insert_, keys, 1);
    for (size_t row = 0; row < count_; ++row) sink.SaveRow(values_.data() + row * fields_.size());
  }

  int64_t count() const { return static_cast<int64_t>(count_); }

 private:
  TableFields fields_;
  std::vector<BoundValue> values_;
  size_t count_ = 0;
  std::unique_ptr<Storager> storager_;
  SqliteStatement insert_;
};

void InsertRows(benchmark::State& state) {
  TempFolder folder;
  Rows rows;
  int number = 0;
  for ([[maybe_unused]] auto step : state) {
    state.PauseTiming();
    rows.Open(folder.File(std::to_string(number++)));
    SavedKeys keys(size_t{40} << 20);
    state.ResumeTiming();
    rows.Save(&keys);
  }
  state.SetItemsProcessed(rows.count() * state.iterations());
}

// Rows that stand in the result already, with and without the set of keys.
void RefuseRows(benchmark::State& state) {
  TempFolder folder;
  Rows rows;
  rows.Open(folder.File("result"));
  SavedKeys keys(size_t{40} << 20);
  SavedKeys* const used = state.range(0) == 1 ? &keys : nullptr;
  rows.Save(used);
  for ([[maybe_unused]] auto step : state) rows.Save(used);
  state.SetItemsProcessed(rows.count() * state.iterations());
}

void ReadFromPageCache(benchmark::State& state) {
  MicroSource& source = Source("sms", "1");
  std::vector<uint8_t> buffer(kReadBuffer);
  int64_t bytes = 0;
  for ([[maybe_unused]] auto step : state) {
    const int file = open("bench-data/sms-4/source/sample.db", O_RDONLY | O_CLOEXEC);
    for (ssize_t got = 0; (got = read(file, buffer.data(), buffer.size())) > 0;) bytes += got;
    close(file);
  }
  benchmark::DoNotOptimize(source.size());
  state.SetBytesProcessed(bytes);
}

BENCHMARK(AddKeys);
BENCHMARK(FindKeys);
BENCHMARK(InsertRows);
BENCHMARK(RefuseRows)->ArgName("keys")->Arg(0)->Arg(1);
BENCHMARK(ReadFromPageCache);

}  // namespace

}  // namespace bench
