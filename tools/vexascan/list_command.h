// "vexascan list": what the configuration covers, in short.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>

namespace vexascan {

struct ListRequest {
  std::string system;                   // empty: both
  std::string data_type;                // empty: all
  std::filesystem::path config_folder;  // empty: the shipped configuration
  bool as_json = false;
};

// Returns an exit code. Throws UsageError when there is no configuration.
int RunList(const ListRequest& request, std::ostream& out);

}  // namespace vexascan
