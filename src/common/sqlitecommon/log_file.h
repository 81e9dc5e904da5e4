#pragma once

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>

#include "common/sqlitecommon/file_blocks.h"

// A write-ahead log that is read piece by piece, however long it is. Not safe for use by several
// threads.
class LogFile {
 public:
  // Opens the log at `path` (UTF-8). It is read to its end once: one that cannot be is refused as a
  // whole, with the lines that ReadThrough has. False, too, when it is empty.
  bool Open(const std::string& path);

  uint64_t size() const { return size_; }

  // The byte at `offset`, which lies inside the file.
  uint8_t ReadByte(uint64_t offset) {
    return blocks_.ReadByte(offset, size_, [this](uint64_t from, uint64_t length, uint8_t* out) {
      ReadTo(from, length, out);
    });
  }

  // Copies bytes that lie inside the file.
  void ReadTo(uint64_t offset, uint64_t length, uint8_t* out);

 private:
  std::ifstream stream_;
  uint64_t size_ = 0;
  FileBlocks blocks_;
};

// The bytes of a log behind its first ones. A copy speaks of the same file, which outlives it.
class LogFileBytes {
 public:
  LogFileBytes(LogFile& file, uint64_t begin)
      : file_(&file), begin_(begin), size_(file.size() - begin) {}

  uint64_t size() const { return size_; }

  // 0 behind the end.
  uint8_t ReadByte(uint64_t offset) const {
    return offset < size_ ? file_->ReadByte(begin_ + offset) : uint8_t{0};
  }

  // Copies as many of the bytes as there are.
  void CopyTo(uint64_t offset, uint64_t length, uint8_t* out) const {
    if (offset < size_) file_->ReadTo(begin_ + offset, std::min(length, size_ - offset), out);
  }

 private:
  LogFile* file_;
  uint64_t begin_;
  uint64_t size_;
};

inline uint64_t SourceSize(const LogFileBytes& log) { return log.size(); }
