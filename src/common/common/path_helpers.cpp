#include "common/common/path_helpers.h"

#include <filesystem>
#include <system_error>

#include "common/common/log.h"

namespace fs = std::filesystem;

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string joined(folder);
  joined += kPathSeparator;
  joined += name;
  return joined;
}

std::string FileNameOfPath(const std::string& path) {
  const size_t cut = path.rfind(kPathSeparator);
  return cut == std::string::npos ? path : path.substr(cut + 1);
}

bool PathExists(const std::string& path) {
  std::error_code error;
  return fs::exists(fs::path(path), error);
}

bool RemoveFileIfExists(const std::string& path) {
  const fs::path target(path);
  std::error_code error;
  if (fs::is_directory(target, error) || !fs::exists(target, error)) return true;
  fs::remove(target, error);
  LogEx(kLogModule, kLogError, "%s", error.message().c_str());
  return true;
}
