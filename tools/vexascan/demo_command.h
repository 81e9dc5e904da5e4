// "vexascan demo": a sample database with deleted messages, its scan, and what came back.
#pragma once

#include <filesystem>
#include <iosfwd>

namespace vexascan {

struct DemoRequest {
  std::filesystem::path folder = "vexascan-demo";
  std::filesystem::path config_folder;  // empty: the shipped configuration
  std::filesystem::path temp_folder;    // empty: the system's
};

// Returns an exit code: success when at least 90 of 100 messages whose bytes still stand came back,
// in every kind of deletion. Throws as RunScan does.
int RunDemo(const DemoRequest& demo, std::ostream& out);

}  // namespace vexascan
