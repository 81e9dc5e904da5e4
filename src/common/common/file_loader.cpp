#include "common/common/file_loader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include "common/common/file_reading.h"
#include "common/common/log.h"
#include "common/common/source_path.h"

namespace {

// Line numbers that stand in the texts of these messages; they do not follow the code.
constexpr int kLineReadThrough = 43;
constexpr int kLineOpenHeader = 86;
constexpr int kLineReadHeader = 102;

constexpr uint64_t kPieceBytes = 262144;

// Opens `path` at its end. A directory opens as a stream on this platform but has no bytes to
// give, so it is refused here as a file that cannot be opened.
bool OpenAtEnd(const std::string& path, std::ifstream& stream, uint64_t& size) {
  std::error_code error;
  if (std::filesystem::is_directory(std::filesystem::path(path), error)) {
    errno = EISDIR;
    return false;
  }
  errno = 0;
  stream.open(path, std::ios::binary | std::ios::ate);
  if (!stream.is_open()) return false;
  const std::streamoff end = stream.tellg();
  stream.seekg(0);
  size = end > 0 ? static_cast<uint64_t>(end) : 0;
  return true;
}

bool ReadInto(std::ifstream& stream, size_t count, uint8_t* out) {
  stream.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(count));
  return static_cast<bool>(stream);
}

}  // namespace

bool ReadThrough(const std::string& path, uint64_t& size) {
  std::ifstream stream;
  if (!OpenAtEnd(path, stream, size)) {
    LogEx(kLogModule, kLogError, "Fail to load file %s", std::strerror(errno));
    return false;
  }
  if (size == 0) return false;
  if (CanReadUnseen(path, size)) return true;
  const auto piece = std::make_unique_for_overwrite<uint8_t[]>(kPieceBytes);
  for (uint64_t at = 0; at < size; at += kPieceBytes) {
    if (ReadInto(stream, std::min(kPieceBytes, size - at), piece.get())) continue;
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to read file %s, %s", kSourceCommon,
          kLineReadThrough, std::strerror(errno), path.c_str());
    return false;
  }
  return true;
}

bool ReadDbHeaderBytes(const std::string& path, std::vector<uint8_t>& out) {
  std::ifstream stream;
  uint64_t size = 0;
  if (!OpenAtEnd(path, stream, size)) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to load file %s, %s", kSourceCommon,
          kLineOpenHeader, std::strerror(errno), path.c_str());
    return false;
  }
  if (size < kDbHeaderBytes) return false;
  out.resize(kDbHeaderBytes);
  if (!ReadInto(stream, kDbHeaderBytes, out.data())) {
    LogEx(kLogModule, kLogError, "[%s], at %d line, Fail to read file %s, %s", kSourceCommon,
          kLineReadHeader, std::strerror(errno), path.c_str());
    return false;
  }
  return true;
}

bool MeasureFile(const std::string& path, uint64_t& size) {
  std::ifstream stream;
  return OpenAtEnd(path, stream, size);
}

void ReadAt(std::istream& stream, uint64_t offset, uint64_t length, uint8_t* out) {
  stream.clear();
  stream.seekg(static_cast<std::streamoff>(offset));
  stream.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(length));
  const auto got = static_cast<uint64_t>(stream.gcount());
  if (got < length) std::memset(out + got, 0, length - got);
}
