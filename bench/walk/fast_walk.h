#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "scansqlite/deleted/deleted_pass.h"
#include "scansqlite/sieve/header_sieve.h"
#include "support/scan_sqlite_probe.h"

namespace bench {

struct WalkCounts {
  uint64_t bytes = 0;      // of the source
  uint64_t sieved = 0;     // positions that the sieve let through, of all layouts
  uint64_t survivors = 0;  // those whose whole header fits
  uint64_t records = 0;    // those that the full test accepts
};

// The deleted scan of one source in pieces, so that a benchmark can run one without the others.
class FastWalk {
 public:
  // Prepares a scan; throws std::runtime_error when that fails.
  explicit FastWalk(const ScanContext& context);

  // Every page is read and sieved for all layouts together. With `headers` the survivors' headers
  // are tested, with `records` all of them.
  enum class Depth { kSieve, kHeaders, kRecords };
  WalkCounts Sweep(SieveLevel level, Depth depth, bool of_log);

  // How many different positions are sieved and survive, whatever the number of layouts that take
  // each.
  WalkCounts CountPlaces(bool of_log);

  // What a scan does, passes after each other with shared sweeps, but for saving: rows are made
  // and dropped.
  void RunPasses(SieveLevel level, bool of_log);

  uint64_t SourceBytes(bool of_log);
  ScanSqliteProbe& probe() { return probe_; }
  const std::vector<TablePasses>& tables() const { return tables_; }

 private:
  void MakeTables();
  template <typename Source, typename Cursor>
  WalkCounts CountPlacesOf(Source& source, Cursor cursor);
  template <typename Source, typename Cursor>
  WalkCounts SweepSource(Source& source, Cursor cursor, SieveLevel level, Depth depth);
  template <typename Source, typename Cursor>
  void RunAll(Source& source, SieveLevel level);
  template <typename Action>
  void WithLog(const Action& action);
  template <typename Action>
  void WithMainFile(const Action& action);

  ScanSqliteProbe probe_;
  std::vector<TablePasses> tables_;
};

}  // namespace bench
