// The error lines that a run appended to the log file, for a user whose scan went wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vexascan {

class LogReader {
 public:
  // Remembers where the log ends now.
  explicit LogReader(std::filesystem::path log);

  const std::filesystem::path& path() const { return log_; }

  // The last `most` different error messages written since.
  std::vector<std::string> LastErrors(std::size_t most) const;

 private:
  std::filesystem::path log_;
  std::uintmax_t start_ = 0;
};

}  // namespace vexascan
