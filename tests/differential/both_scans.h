#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "differential/application.h"
#include "differential/option_scan.h"
#include "differential/source.h"
#include "scansqlite/scan_context.h"
#include "support/temp_folder.h"

namespace differential {

// Whether VEXA_LONG_TESTS is set in the environment, and how many seeds a test tries then.
bool RunsLong();
uint64_t SeedsOf(uint64_t usual);

enum class Range { kAll, kLive, kDeleted };

// Everything that a scan shows.
struct Outcome {
  std::string ending;             // the code, or the exception
  std::vector<std::string> log;   // level, module and message
  std::vector<std::string> rows;  // tables with their texts, rows with row ids and types
  size_t row_count = 0;
};

// The first difference of two lists, with what stands around it.
::testing::AssertionResult SameLines(const std::vector<std::string>& library,
                                     const std::vector<std::string>& plain);

// Scans with the library and with the plain walk, from and to the same paths.
class BothScans {
 public:
  BothScans();

  // Makes the application the one to scan for.
  void Configure(const Application& application);
  void SetSource(const Source& source) const;

  Outcome RunLibrary(Range range) const;
  Outcome RunPlain(Range range) const;
  // The library's parts put together in another way.
  Outcome RunWith(const ScanOptions& options, Range range) const;

  // Runs both. `name` tells the case in a failure.
  void ExpectEqual(Range range, const std::string& name);

  // Rows that all results held together: a test of nothing but empty results shows nothing.
  size_t rows_seen() const { return rows_seen_; }

  ScanContext context() const;

 private:
  void Clean() const;
  template <typename MakeScan>
  Outcome Run(Range range, const MakeScan& make_scan) const;

  TempFolder folder_;
  int data_type_ = 1;
  size_t rows_seen_ = 0;
};

}  // namespace differential
