// What a configuration database says about the applications that it covers.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vexascan {

struct CoveredTable {
  std::string name;
  std::string database;     // file on the phone; empty when the configuration does not tell
  bool deleted = false;     // false: live rows only
  std::size_t layouts = 0;  // carved beside the live one
  std::vector<std::string> key;
  std::string limits;
};

struct Gap {
  std::string what;
  std::string why;
};

struct CoveredApplication {
  std::string system;
  std::string data_type;
  std::string name;  // may be empty
  std::vector<std::string> databases;
  bool log_only = false;  // deleted rows come out of the write-ahead log only
  std::vector<CoveredTable> tables;
  std::vector<Gap> gaps;
};

// Applications by system and data type, in the order of the library's numbers. The file is read
// without a lock and without side files. Throws UsageError when it is no configuration.
std::vector<CoveredApplication> ReadCoverage(const std::filesystem::path& config_database);

}  // namespace vexascan
