// The private copies that a scan works on. The library wants a source that it may write to, opens
// its configuration with a pragma that changes the file, and replays any "-wal" it finds under a
// working copy's name; so it never gets the originals, and every run of it a folder of its own.
#pragma once

#include <filesystem>
#include <string>

#include "private_folder.h"
#include "scan_request.h"

namespace vexascan {

class StagedFiles {
 public:
  // Copies the source, its log and the configuration below `request.temp_folder`. Throws
  // std::system_error.
  explicit StagedFiles(const ScanRequest& request);

  const std::filesystem::path& source() const { return source_; }
  std::filesystem::path config_folder() const { return folder_.path() / "config"; }

  // Fresh paths for one run of the library, told apart by `run`.
  std::filesystem::path NewTempFolder(const std::string& run) const;
  std::filesystem::path ResultPath(const std::string& run) const;

  // Throws UsageError when the configuration has nothing to say about this application.
  void CheckApplicationIsKnown(const ScanRequest& request) const;

 private:
  PrivateFolder folder_;
  std::filesystem::path source_;
};

}  // namespace vexascan
