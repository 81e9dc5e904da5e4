#include "evidence_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

namespace vexascan {
namespace fs = std::filesystem;
namespace {

[[noreturn]] void FailWithErrno(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

class Descriptor {
 public:
  Descriptor(int number, const fs::path& path) : number_(number) {
    if (number_ < 0) {
      FailWithErrno(path);
    }
  }
  ~Descriptor() { ::close(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

// Only the owner of a file (or root) may read it without moving its access time.
int OpenForReading(const fs::path& path) {
  const int quiet = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOATIME);
  return quiet >= 0 || errno != EPERM ? quiet : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

void WriteAll(int descriptor, const char* data, std::size_t length, const fs::path& path) {
  while (length > 0) {
    const ssize_t written = ::write(descriptor, data, length);
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      FailWithErrno(path);
    }
    data += written;
    length -= static_cast<std::size_t>(written);
  }
}

void Pour(const Descriptor& in, const fs::path& from, const Descriptor& out, const fs::path& to) {
  std::array<char, std::size_t{1} << 16U> buffer{};
  for (;;) {
    const ssize_t got = ::read(in.number(), buffer.data(), buffer.size());
    if (got == 0) {
      return;
    }
    if (got > 0) {
      WriteAll(out.number(), buffer.data(), static_cast<std::size_t>(got), to);
    } else if (errno != EINTR) {
      FailWithErrno(from);
    }
  }
}

mode_t FileCreationMask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

}  // namespace

fs::path WithSuffix(const fs::path& path, std::string_view suffix) {
  fs::path result = path;
  result += suffix;
  return result;
}

std::vector<fs::path> SideFiles(const fs::path& database) {
  return {WithSuffix(database, "-wal"), WithSuffix(database, "-shm"),
          WithSuffix(database, "-journal")};
}

bool SamePlace(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  if (fs::equivalent(a, b, ignored)) {
    return true;  // one inode: symbolic links, hard links, bind mounts
  }
  const auto place = [](const fs::path& path) {
    std::error_code failed;
    fs::path resolved = fs::weakly_canonical(fs::absolute(path), failed);
    return failed ? fs::absolute(path).lexically_normal() : resolved;
  };
  return place(a) == place(b);
}

void CopyBytes(const fs::path& from, const fs::path& to) {
  const Descriptor in(OpenForReading(from), from);
  const Descriptor out(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600), to);
  Pour(in, from, out, to);
}

void PutInPlace(const fs::path& from, const fs::path& to) {
  std::string name = WithSuffix(to, ".XXXXXX").string();
  const Descriptor in(OpenForReading(from), from);
  const Descriptor out(::mkostemp(name.data(), O_CLOEXEC), to);
  try {
    Pour(in, from, out, to);
    if (::fchmod(out.number(), 0666 & ~FileCreationMask()) != 0 || ::fsync(out.number()) != 0) {
      FailWithErrno(to);
    }
    fs::rename(name, to);
  } catch (...) {
    ::unlink(name.c_str());
    throw;
  }
}

}  // namespace vexascan
