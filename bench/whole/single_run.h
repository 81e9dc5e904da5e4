#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>

namespace bench {

// One measurement, taken in a process of its own so that memory and caches of the library are
// those of one scan.
struct RunRequest {
  std::string kind;     // see single_run.cpp
  std::string folder;   // of the case
  std::string variant;  // of its configuration
  std::string level = "avx2";
  std::string scratch;  // made anew
  bool of_log = false;
  bool is_counted = false;  // one pass only, for an instruction count
};

// Runs it in this process. Gives "seconds" of processor time of one pass, "bytes", "rss_kb" and
// what the kind counts; throws std::runtime_error on failure.
Json::Value RunSingle(const RunRequest& request);

}  // namespace bench
