// A fresh folder that nobody else may enter, gone with everything in it when its owner dies.
#pragma once

#include <filesystem>

namespace vexascan {

class PrivateFolder {
 public:
  // Throws std::system_error when no folder can be made below `parent`.
  explicit PrivateFolder(const std::filesystem::path& parent);
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace vexascan
