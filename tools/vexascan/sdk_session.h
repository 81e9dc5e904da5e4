// The library between its start and its end, and one run of it with everything that can come of it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "signal_watcher.h"

namespace vexascan {

struct RunOutcome {
  int code = 0;
  std::optional<std::string> exception;  // what left the library instead of a code
  bool cut = false;                      // a signal asked for the end before the run was over

  bool Whole() const { return code == 0 && !exception && !cut; }
};

// One at a time in a process. From its start on, Ctrl-C stops the scan that runs and all later
// ones; a SignalBlock must live longer.
class SdkSession {
 public:
  // Throws ScanFailure when the library refuses to start.
  SdkSession(const std::filesystem::path& log_folder, const std::filesystem::path& config_folder);

  RunOutcome Run(const std::string& parameters);

 private:
  // The library must outlive the watcher, whose thread calls into it.
  struct Library {
    Library(const std::filesystem::path& log_folder, const std::filesystem::path& config_folder);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
  };
  Library library_;
  SignalWatcher watcher_;
};

}  // namespace vexascan
