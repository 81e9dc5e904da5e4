#pragma once

#include <map>
#include <string>
#include <vector>

#include "recovery/value.h"

namespace recovery {

// One table of a result.
struct ResultTable {
  std::vector<std::string> columns;
  std::vector<Row> rows;
};

struct ScanResult {
  std::string failure;  // empty: the scan returned 0 and the result is sound
  std::map<std::string, ResultTable> tables;
};

// The result columns of one table that the configuration marks as row ids.
using RowIdColumns = std::map<std::string, std::string>;

// Runs the library in this process, with a copy of a configuration. Only one may stand at a time.
class ScanRunner {
 public:
  // `folder` is for the configuration, the log and the working copies.
  ScanRunner(const std::string& config_path, std::string folder);
  ~ScanRunner();
  ScanRunner(const ScanRunner&) = delete;
  ScanRunner& operator=(const ScanRunner&) = delete;

  // Scans all there is of a database into `result_path`.
  ScanResult Scan(const std::string& system, const std::string& data_type, int system_version,
                  const std::string& source_path, const std::string& result_path);

  // By table name, for an application. Tables without a row id column are left out.
  RowIdColumns RowIds(const std::string& system, const std::string& data_type) const;

  // Whether the configuration scans the table, or any table of the application.
  bool Covers(const std::string& system, const std::string& data_type,
              const std::string& table = "") const;

 private:
  std::string ConfigFolder() const { return folder_ + "/config"; }
  std::string ConfigPath() const { return ConfigFolder() + "/VexaConfiger.db"; }

  std::string folder_;
};

}  // namespace recovery
