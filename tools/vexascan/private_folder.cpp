#include "private_folder.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>

namespace vexascan {
namespace fs = std::filesystem;

PrivateFolder::PrivateFolder(const fs::path& parent) {
  std::string name = (fs::absolute(parent) / "vexascan-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) {  // made with 0700
    throw std::system_error(errno, std::generic_category(), parent.string());
  }
  path_ = name;
}

PrivateFolder::~PrivateFolder() {
  std::error_code failed;
  fs::remove_all(path_, failed);
  if (failed) {
    std::cerr << "vexascan: the working copies in " << path_.string()
              << " could not be removed: " << failed.message() << "\n";
  }
}

}  // namespace vexascan
