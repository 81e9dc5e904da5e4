#include "common/sqlitecommon/log_file.h"

#include "common/common/file_loader.h"

bool LogFile::Open(const std::string& path) {
  if (!ReadThrough(path, size_)) return false;
  stream_.open(path, std::ios::binary);
  return stream_.is_open();
}

void LogFile::ReadTo(uint64_t offset, uint64_t length, uint8_t* out) {
  ReadAt(stream_, offset, length, out);
}
