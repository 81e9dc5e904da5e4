#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scansqlite/scan_context.h"

namespace bench {

// One source with the configurations to scan it by, in a folder of its own that is made once.
struct SampleCase {
  std::string folder;

  std::string source() const { return folder + "/source/sample.db"; }
  std::string log() const { return source() + "-wal"; }
  // What a scan with this configuration is given. Results and working copies go to `scratch`.
  ScanContext Context(const std::string& variant, const std::string& scratch) const;
};

// The names of all cases: sms, wide, noise, log, apps, million, gib.
const std::vector<std::string>& CaseNames();

// The configurations of a case. The first is the usual one. Of sms they are named by the layouts of
// the table that they know (2, 1, 3, 10), of apps by the tables (10, 1, 2, 3).
std::vector<std::string> VariantsOf(const std::string& name);

// The case with a source of about that size, made below `root` unless it is there already.
// "million" and "gib" have a size of their own.
SampleCase MakeCase(const std::string& root, const std::string& name, uint64_t megabytes);

}  // namespace bench
