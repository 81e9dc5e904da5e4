#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "whole/single_run.h"

namespace bench {

struct Options {
  std::string data;
  uint64_t megabytes = 32;
  int repeats = 3;
  std::vector<std::string> cases;
  bool is_quick = false;  // without the large sources and the instruction counts
};

// Takes all measurements of the benchmark. They alternate, so that what disturbs the machine for a
// while disturbs all of them, and the median of each counts.
class Campaign {
 public:
  explicit Campaign(Options options) : options_(std::move(options)) {}

  // The medians, by case and measurement.
  Json::Value Run();

  // Whether the library and the plain walk gave the same rows everywhere.
  bool rows_are_equal() const { return rows_are_equal_; }

 private:
  struct Measurement {
    std::string name;
    RunRequest request;
    bool is_slow = false;
    std::vector<Json::Value> runs = {};
  };

  bool Wants(const std::string& name) const;
  void Add(const std::string& name, const RunRequest& request, bool is_slow = false);
  RunRequest RequestFor(const std::string& folder, const std::string& kind,
                        const std::string& variant) const;
  void AddWalks(const std::string& folder, const std::string& variant, bool of_log);
  void AddScans(const std::string& folder, const std::string& variant);
  void AddScaling(const std::string& name, const std::string& folder);
  Json::Value Measure(int rounds);
  Json::Value RunCase(const std::string& name);
  Json::Value RunSizes();
  Json::Value RunLarge(const std::string& name);
  Json::Value CountCase(const std::string& folder, const std::string& variant);
  void CompareRows(const std::string& name, const Json::Value& results);

  Options options_;
  bool rows_are_equal_ = true;
  std::vector<Measurement> measurements_;
};

}  // namespace bench
