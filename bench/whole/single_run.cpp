#include "whole/single_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <vector>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#endif

#include "data/sample_case.h"
#include "reference/plain_scan.h"
#include "storager/column_lists.h"
#include "walk/fast_walk.h"
#include "whole/cpu_clock.h"
#include "whole/result_rows.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

// A measurement goes on for this long, and at least once.
constexpr double kEnoughSeconds = 0.15;

constexpr size_t kReadBuffer = size_t{4} << 20;

using Action = std::function<void()>;

double TimeOnce(const Action& action) {
  const double begin = CpuSeconds();
  CALLGRIND_START_INSTRUMENTATION;
  action();
  CALLGRIND_STOP_INSTRUMENTATION;
  return CpuSeconds() - begin;
}

// Seconds of one pass. The first one, which finds cold caches and untouched memory, is left out.
double TimePasses(const RunRequest& request, const Action& action) {
  const double first = TimeOnce(action);
  if (request.is_counted || first > kEnoughSeconds) return first;
  double sum = 0;
  int passes = 0;
  while (sum < kEnoughSeconds) {
    sum += TimeOnce(action);
    ++passes;
  }
  return sum / passes;
}

SieveLevel LevelOf(const std::string& name) {
  if (name == "avx2") return SieveLevel::kAvx2;
  if (name == "ssse3") return SieveLevel::kSsse3;
  return SieveLevel::kWords;
}

ScanContext ContextOf(const RunRequest& request) {
  return SampleCase{request.folder}.Context(request.variant, request.scratch);
}

uint64_t BytesOfSource(const RunRequest& request) {
  const SampleCase sample{request.folder};
  uint64_t bytes = fs::file_size(sample.source());
  if (fs::exists(sample.log())) bytes += fs::file_size(sample.log());
  return bytes;
}

void ReadFile(const std::string& path, std::vector<uint8_t>& buffer) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) throw std::runtime_error("cannot open " + path);
  while (read(file, buffer.data(), buffer.size()) > 0) {
  }
  close(file);
}

Json::Value RunRead(const RunRequest& request) {
  const SampleCase sample{request.folder};
  const std::string path = request.of_log ? sample.log() : sample.source();
  std::vector<uint8_t> buffer(kReadBuffer);
  Json::Value out;
  out["seconds"] = TimePasses(request, [&] { ReadFile(path, buffer); });
  out["bytes"] = Json::UInt64{fs::file_size(path)};
  return out;
}

Json::Value RunSweep(const RunRequest& request, FastWalk::Depth depth) {
  FastWalk walk(ContextOf(request));
  WalkCounts counts;
  Json::Value out;
  out["seconds"] = TimePasses(
      request, [&] { counts = walk.Sweep(LevelOf(request.level), depth, request.of_log); });
  out["bytes"] = Json::UInt64{walk.SourceBytes(request.of_log)};
  out["sieved"] = Json::UInt64{counts.sieved};
  out["survivors"] = Json::UInt64{counts.survivors};
  if (depth == FastWalk::Depth::kHeaders && !request.is_counted) {
    const WalkCounts places = walk.CountPlaces(request.of_log);
    out["sieved_places"] = Json::UInt64{places.sieved};
    out["survivor_places"] = Json::UInt64{places.survivors};
  }
  return out;
}

Json::Value RunPasses(const RunRequest& request) {
  FastWalk walk(ContextOf(request));
  Json::Value out;
  out["seconds"] =
      TimePasses(request, [&] { walk.RunPasses(LevelOf(request.level), request.of_log); });
  out["bytes"] = Json::UInt64{walk.SourceBytes(request.of_log)};
  return out;
}

Json::Value RunPlainWalk(const RunRequest& request) {
  PlainScan scan(ContextOf(request));
  if (scan.Init() != kScanSucceeded) throw std::runtime_error("the scan cannot be prepared");
  std::vector<plain_walk::Hit> hits;
  Json::Value out;
  out["seconds"] =
      TimePasses(request, [&] { hits = request.of_log ? scan.LogHits() : scan.MainFileHits(); });
  const SampleCase sample{request.folder};
  out["bytes"] = Json::UInt64{fs::file_size(request.of_log ? sample.log() : sample.source())};
  out["records"] = Json::UInt64{hits.size()};
  std::set<uint64_t> places;
  for (const plain_walk::Hit& hit : hits) places.insert(hit.position);
  out["record_places"] = Json::UInt64{places.size()};
  return out;
}

// From the source's header to the closed result. The copies of the source count too.
template <typename Scan>
Json::Value RunScan(const RunRequest& request, const std::function<int(Scan&)>& range,
                    const std::function<std::unique_ptr<Scan>(const ScanContext&)>& make) {
  const ScanContext context = ContextOf(request);
  Json::Value out;
  double prepared = 0;
  const double begin = CpuSeconds();
  {
    const std::unique_ptr<Scan> scan = make(context);
    if (scan->Init() != kScanSucceeded) throw std::runtime_error("the scan cannot be prepared");
    prepared = CpuSeconds();
    out["code"] = range(*scan);
  }
  out["seconds"] = CpuSeconds() - begin;
  out["prepare_seconds"] = prepared - begin;
  out["rss_kb"] = Json::Int64{PeakKilobytes()};
  out["bytes"] = Json::UInt64{BytesOfSource(request)};
  const ResultRows rows = ReadResultRows(context.dest_db_path);
  out["rows"] = Json::UInt64{rows.count};
  out["rows_hash"] = std::to_string(rows.hash);
  return out;
}

Json::Value RunFastScan(const RunRequest& request, int (ScanSqlite::*range)()) {
  return RunScan<ScanSqlite>(
      request, [range](ScanSqlite& scan) { return (scan.*range)(); },
      [](const ScanContext& context) {
        return std::make_unique<ScanSqlite>(&context, nullptr, nullptr);
      });
}

Json::Value RunPlainScan(const RunRequest& request, int (PlainScan::*range)()) {
  return RunScan<PlainScan>(
      request, [range](PlainScan& scan) { return (scan.*range)(); },
      [](const ScanContext& context) { return std::make_unique<PlainScan>(context); });
}

// The live rows alone, without preparing.
Json::Value RunCopy(const RunRequest& request) {
  const ScanContext context = ContextOf(request);
  auto scan = std::make_unique<ScanSqlite>(&context, nullptr, nullptr);
  if (scan->Init() != kScanSucceeded) throw std::runtime_error("the scan cannot be prepared");
  Json::Value out;
  out["seconds"] = TimeOnce([&] {
    scan->ScanExist();
    scan.reset();
  });
  out["bytes"] = Json::UInt64{BytesOfSource(request)};
  out["rows"] = Json::UInt64{ReadResultRows(context.dest_db_path).count};
  return out;
}

// What SQLite alone needs for the same rows, through the same connection into the same tables.
Json::Value RunAttach(const RunRequest& request) {
  const ScanContext context = ContextOf(request);
  auto probe = std::make_unique<ScanSqliteProbe>(context);
  if (probe->Init() != kScanSucceeded) throw std::runtime_error("the scan cannot be prepared");
  Json::Value out;
  out["seconds"] = TimeOnce([&] {
    Storager& result = probe->storager();
    result.Execute(("ATTACH '" + probe->working_db_path() + "' AS source").c_str());
    result.Execute("BEGIN");
    for (const auto& [name, fields] : probe->need_query_tables()) {
      const std::string names = JoinColumnNames(fields);
      result.Execute(("INSERT OR IGNORE INTO main." + name + "(" + names + ") SELECT " + names +
                      " FROM source." + name + " ORDER BY rowid")
                         .c_str());
    }
    result.Execute("COMMIT");
    probe.reset();
  });
  out["bytes"] = Json::UInt64{BytesOfSource(request)};
  out["rows"] = Json::UInt64{ReadResultRows(context.dest_db_path).count};
  return out;
}

// Into a new database, as its output is meant to be used.
Json::Value RunRecover(const RunRequest& request) {
  const std::string sql = request.scratch + "/recovered.sql";
  const std::string command = "sqlite3 '" + SampleCase{request.folder}.source() + "' .recover > '" +
                              sql + "' 2> /dev/null && sqlite3 '" + request.scratch +
                              "/recovered.db' < '" + sql + "' > /dev/null 2>&1";
  Json::Value out;
  const double begin = CpuSecondsOfChildren();
  out["code"] = std::system(command.c_str());
  out["seconds"] = CpuSecondsOfChildren() - begin;
  out["bytes"] = Json::UInt64{BytesOfSource(request)};
  if (out["code"] != 0) throw std::runtime_error(".recover failed");
  return out;
}

}  // namespace

Json::Value RunSingle(const RunRequest& request) {
  using Run = std::function<Json::Value()>;
  const std::map<std::string, Run> kinds = {
      {"read", [&] { return RunRead(request); }},
      {"sieve", [&] { return RunSweep(request, FastWalk::Depth::kSieve); }},
      {"walk", [&] { return RunSweep(request, FastWalk::Depth::kHeaders); }},
      {"records", [&] { return RunSweep(request, FastWalk::Depth::kRecords); }},
      {"full", [&] { return RunPasses(request); }},
      {"plain-walk", [&] { return RunPlainWalk(request); }},
      {"scan", [&] { return RunFastScan(request, &ScanSqlite::Scan); }},
      {"scan-live", [&] { return RunFastScan(request, &ScanSqlite::ScanExist); }},
      {"scan-deleted", [&] { return RunFastScan(request, &ScanSqlite::ScanDeleted); }},
      {"plain-scan", [&] { return RunPlainScan(request, &PlainScan::Scan); }},
      {"copy", [&] { return RunCopy(request); }},
      {"attach", [&] { return RunAttach(request); }},
      {"recover", [&] { return RunRecover(request); }},
  };
  const auto at = kinds.find(request.kind);
  if (at == kinds.end()) throw std::runtime_error("no such measurement: " + request.kind);
  fs::remove_all(request.scratch);
  fs::create_directories(request.scratch + "/temp");
  Json::Value out = at->second();
  if (!out.isMember("rss_kb")) out["rss_kb"] = Json::Int64{PeakKilobytes()};
  fs::remove_all(request.scratch);
  return out;
}

}  // namespace bench
