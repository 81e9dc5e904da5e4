#pragma once

#include "scansqlite/scan_context.h"
#include "scansqlite/sieve/header_sieve.h"
#include "support/scan_sqlite_probe.h"

namespace differential {

// What makes the library's scan fast, each to be had or not.
struct ScanOptions {
  SieveLevel level = BestSieveLevel();
  bool share_sweeps = true;         // one sweep looks for all layouts
  bool keep_keys = true;            // refused duplicates never reach SQLite
  LateIndexLimits late_index = {};  // which tables get their index behind their live rows
};

// Limits with which every table, or none, gets its unique index behind its live rows, or in the
// middle of them.
LateIndexLimits IndexAlwaysLate();
LateIndexLimits IndexNeverLate();
LateIndexLimits IndexAfterRows(uint64_t rows);

// The levels of the sieve that this machine has.
std::vector<SieveLevel> SieveLevels();

// The library's scan with other options than it takes itself. Rows are the same whatever they are;
// the log is not written as a scan writes it.
class OptionScan {
 public:
  OptionScan(const ScanContext& context, const ScanOptions& options)
      : probe_(context), options_(options) {}

  int Init();
  int Scan();
  int ScanExist() { return probe_.ScanExist(); }
  int ScanDeleted();

 private:
  int32_t ScanLog();
  int32_t ScanMainFile();

  ScanSqliteProbe probe_;
  ScanOptions options_;
};

}  // namespace differential
