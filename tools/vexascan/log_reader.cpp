#include "log_reader.h"

#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace vexascan {
namespace fs = std::filesystem;

LogReader::LogReader(fs::path log) : log_(std::move(log)) {
  std::error_code missing;
  const std::uintmax_t size = fs::file_size(log_, missing);
  start_ = missing ? 0 : size;
}

std::vector<std::string> LogReader::LastErrors(std::size_t most) const {
  constexpr std::string_view kErrorMark = " error VexaSqliteSDK ";
  std::vector<std::string> errors;
  std::ifstream file(log_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(start_));
  for (std::string line; std::getline(file, line);) {
    const std::size_t mark = line.find(kErrorMark);
    if (mark == std::string::npos) {
      continue;
    }
    std::string message = line.substr(mark + kErrorMark.size());
    std::erase(errors, message);
    errors.push_back(std::move(message));
    if (errors.size() > most) {
      errors.erase(errors.begin());
    }
  }
  return errors;
}

}  // namespace vexascan
