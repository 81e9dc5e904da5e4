#include "walk/fast_walk.h"

#include <set>
#include <stdexcept>

#include "common/common/file_loader.h"
#include "scansqlite/deleted/log_source.h"
#include "scansqlite/deleted/main_file_cursor.h"
#include "scansqlite/deleted/pass_runner.h"

namespace bench {

namespace {

constexpr const char* kName = "bench";

// The layouts of a sweep, ready for its depth.
struct SweptLayouts {
  SweepPlan plan;
  std::vector<std::unique_ptr<RecordPlan>> plans;
  std::vector<std::unique_ptr<RecordTest>> tests;
};

// A plan that is not fast ends a test behind the header.
SweptLayouts MakeLayouts(const std::vector<TablePasses>& tables, FastWalk::Depth depth) {
  SweptLayouts layouts;
  for (const TablePasses& table : tables) {
    for (const auto& pass : table.passes) {
      layouts.plans.push_back(std::make_unique<RecordPlan>(pass->plan));
      if (depth == FastWalk::Depth::kHeaders) layouts.plans.back()->is_fast = false;
      layouts.tests.push_back(std::make_unique<RecordTest>(*layouts.plans.back()));
      if (!layouts.plan.Add(*layouts.plans.back(), layouts.tests.size() - 1)) {
        throw std::runtime_error("too many layouts for one sweep");
      }
    }
  }
  return layouts;
}

}  // namespace

FastWalk::FastWalk(const ScanContext& context) : probe_(context) {
  if (probe_.Init() != kScanSucceeded) throw std::runtime_error("the scan cannot be prepared");
  MakeTables();
}

void FastWalk::MakeTables() {
  for (const auto& [name, table] : probe_.table_infos()) {
    const FeatureMaps* features = probe_.table_features().Find(name);
    const ResultFieldMap* result_fields = probe_.result_field_maps().Find(name);
    TablePasses& entry = tables_.emplace_back();
    entry.table = &table;
    entry.fields = probe_.need_query_tables().Find(name);
    if (features == nullptr || result_fields == nullptr || entry.fields == nullptr) {
      throw std::runtime_error("table " + name + " is not configured");
    }
    entry.row_id_column = RowIdColumnOf(*result_fields);
    entry.guess_row_ids = table.need_guess_row_id == 1;
    for (const SchemaCandidate& candidate : table.candidates) {
      entry.passes.push_back(MakeDeletedPass(probe_.header(), candidate, *features, *result_fields,
                                             *entry.fields, table.flexible_cnt));
    }
  }
}

template <typename Source, typename Cursor>
WalkCounts FastWalk::SweepSource(Source& source, Cursor cursor, SieveLevel level, Depth depth) {
  SweptLayouts layouts = MakeLayouts(tables_, depth);
  WalkCounts counts;
  counts.bytes = source.size();
  SieveResult survivors;
  while (cursor.InSource()) {
    Segment segment;
    if (!cursor.Enter(segment) || segment.begin >= segment.end) continue;
    const ByteView view = source.View(segment.begin, segment.end);
    Sieve(layouts.plan.sieves, level, view.At(segment.begin), segment.end - segment.begin,
          survivors);
    for (SweptGroup& group : layouts.plan.groups) {
      survivors.ForEach(group.sieve, [&](size_t place) {
        const uint64_t position = segment.begin + place;
        counts.sieved += group.members.size();
        if (depth == Depth::kSieve) return;
        group.header->Read(view, position);
        for (const size_t member : group.members) {
          const Verdict verdict = layouts.tests[member]->TestBehind(*group.header, view, position);
          if (verdict == Verdict::kMiss) continue;
          ++counts.survivors;
          if (verdict == Verdict::kHit) ++counts.records;
        }
      });
    }
  }
  return counts;
}

template <typename Source, typename Cursor>
WalkCounts FastWalk::CountPlacesOf(Source& source, Cursor cursor) {
  SweptLayouts layouts = MakeLayouts(tables_, Depth::kHeaders);
  WalkCounts counts;
  SieveResult survivors;
  std::set<uint64_t> sieved;
  std::set<uint64_t> accepted;
  while (cursor.InSource()) {
    Segment segment;
    if (!cursor.Enter(segment) || segment.begin >= segment.end) continue;
    const ByteView view = source.View(segment.begin, segment.end);
    Sieve(layouts.plan.sieves, BestSieveLevel(), view.At(segment.begin),
          segment.end - segment.begin, survivors);
    sieved.clear();
    accepted.clear();
    for (SweptGroup& group : layouts.plan.groups) {
      survivors.ForEach(group.sieve, [&](size_t place) {
        const uint64_t position = segment.begin + place;
        sieved.insert(position);
        for (const size_t member : group.members) {
          if (layouts.tests[member]->Test(view, position) != Verdict::kMiss) {
            accepted.insert(position);
          }
        }
      });
    }
    counts.sieved += sieved.size();
    counts.survivors += accepted.size();
  }
  return counts;
}

template <typename Action>
void FastWalk::WithMainFile(const Action& action) {
  FileDataBuf file(probe_.context().source_db_path);
  if (file.status() != 0) throw std::runtime_error("the source cannot be read");
  MainFileSource source(probe_.header(), file);
  action(source);
}

// Loading the frames is a part of the walk.
template <typename Action>
void FastWalk::WithLog(const Action& action) {
  FileDataBuf file(probe_.context().source_db_path);
  LogFile log;
  if (!log.Open(probe_.working_wal_path()) || log.size() <= kWalHeaderBytes) {
    throw std::runtime_error("the log cannot be read");
  }
  LogSource source(
      {&probe_.header(), LogFileBytes(log, kWalHeaderBytes), &probe_.wal_page_map(), &file, 0});
  action(source);
}

WalkCounts FastWalk::Sweep(SieveLevel level, Depth depth, bool of_log) {
  WalkCounts counts;
  if (of_log) {
    WithLog(
        [&](LogSource& source) { counts = SweepSource(source, LogCursor(source), level, depth); });
  } else {
    WithMainFile([&](MainFileSource& source) {
      counts = SweepSource(source, MainFileCursor(source), level, depth);
    });
  }
  return counts;
}

WalkCounts FastWalk::CountPlaces(bool of_log) {
  WalkCounts counts;
  if (of_log) {
    WithLog([&](LogSource& source) { counts = CountPlacesOf(source, LogCursor(source)); });
  } else {
    WithMainFile(
        [&](MainFileSource& source) { counts = CountPlacesOf(source, MainFileCursor(source)); });
  }
  return counts;
}

template <typename Source, typename Cursor>
void FastWalk::RunAll(Source& source, SieveLevel level) {
  PassRunner<Source> runner(source, kName, level);
  std::vector<DeletedPass*> sharing;
  for (const TablePasses& table : tables_) {
    for (const auto& pass : table.passes) sharing.push_back(pass.get());
  }
  size_t next = 0;
  for (const TablePasses& table : tables_) {
    SqliteStatement nowhere;  // takes no row
    RowSink sink(*table.fields, nowhere, nullptr, 0);
    RowBatch rows(sink, table.row_id_column, table.guess_row_ids);
    for (size_t i = 0; i < table.passes.size(); ++i) {
      runner.RunShared(Cursor(source), sharing, next++, rows);
    }
  }
}

void FastWalk::RunPasses(SieveLevel level, bool of_log) {
  tables_.clear();  // survivors of an earlier run
  MakeTables();
  if (of_log) {
    WithLog([&](LogSource& source) { RunAll<LogSource, LogCursor>(source, level); });
  } else {
    WithMainFile(
        [&](MainFileSource& source) { RunAll<MainFileSource, MainFileCursor>(source, level); });
  }
}

uint64_t FastWalk::SourceBytes(bool of_log) {
  uint64_t bytes = 0;
  MeasureFile(of_log ? probe_.working_wal_path() : probe_.context().source_db_path, bytes);
  return bytes;
}

}  // namespace bench
