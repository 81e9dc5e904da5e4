#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "recovery/compare.h"
#include "recovery/facts.h"

namespace recovery {

struct EvaluateSettings {
  std::string config_path;
  std::string folder;  // for databases and results; emptied behind each scan
  std::vector<uint64_t> seeds;
  size_t rows = 300;
  bool thorough = false;  // every life in every layout; else the rare lives in the newest
  std::vector<std::string> scenarios;  // these only; empty: all
  std::string table;                   // compare this table only
  size_t most_examples = 0;
};

// The figures of one table in one live layout.
struct TableReport {
  std::string system;
  std::string data_type;
  std::string database;
  std::string table;
  size_t layout_index = 0;
  std::string label;
  size_t columns = 0;
  int system_version = 0;
  bool covered = true;  // the configuration names the table
  size_t databases = 0;
  size_t without_table = 0;  // scans whose result has no such table
  Counts clean;
  Counts mixed;
  Examples examples;

  std::string Name() const { return system + '/' + data_type + '/' + table; }
};

struct Evaluation {
  std::vector<TableReport> tables;
  std::vector<std::string> failures;
};

// Seeds for those who tune the configuration, and others that decide.
std::vector<uint64_t> TuneSeeds();
std::vector<uint64_t> HeldOutSeeds();

// Makes databases of one application, scans them and compares.
Evaluation Evaluate(const Facts& facts, const EvaluateSettings& settings);

}  // namespace recovery
