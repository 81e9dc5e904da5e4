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
  LateIndexLimits late_index = {};  // which live rows go in without the unique index
};

// Limits with which the unique index is left out for all live rows, for none, or for some in the
// middle.
LateIndexLimits IndexAlwaysLate();
LateIndexLimits IndexNeverLate();
LateIndexLimits IndexLate(size_t from, size_t to);

// The levels of the sieve that this machine has.

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
