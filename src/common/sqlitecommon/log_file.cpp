#include "common/sqlitecommon/log_file.h"

#include <cstring>

#include "common/common/file_loader.h"

bool LogFile::Open(const std::string& path) {
  if (!ReadThrough(path, size_)) return false;
  stream_.open(path, std::ios::binary);
  return stream_.is_open();
}

void LogFile::ReadTo(uint64_t offset, uint64_t length, uint8_t* out) {
  stream_.clear();
  stream_.seekg(static_cast<std::streamoff>(offset));
  stream_.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(length));
  // A file that became shorter reads as 0 there.
  const auto got = static_cast<uint64_t>(stream_.gcount());
  if (got < length) std::memset(out + got, 0, length - got);
}
