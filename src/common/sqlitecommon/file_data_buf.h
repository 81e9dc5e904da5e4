#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "common/sqlitecommon/file_blocks.h"

// A private copy of a byte range of a file. `deleter` takes `begin` and frees the bytes; the
// holder runs it once, when it has copied out what it needs.
struct FileSlice {
  uint8_t* begin = nullptr;
  uint8_t* end = nullptr;
  std::function<void(uint8_t*)> deleter;
};

// A sliding window of up to 4 MiB over one file, with checked reads at absolute offsets. The window
// moves upward with the bytes that are asked for, and is loaded when the first of its bytes is.
// Bytes behind it come from a few small blocks, so that a walk which jumps back, or goes downward,
// does not load the window anew for every byte.
// Not safe for use by several threads: every read can move the window.
class FileDataBuf {
 public:
  // Opens the file at `path` (UTF-8) for reading and writing; nothing is ever written. `status()`
  // tells whether that worked.
  explicit FileDataBuf(const std::string& path);
  ~FileDataBuf() = default;
  FileDataBuf(const FileDataBuf&) = delete;
  FileDataBuf& operator=(const FileDataBuf&) = delete;

  // 0 when usable, -1 when the file could not be opened or is empty.
  int32_t status() const { return status_; }
  uint64_t file_size() const { return file_size_; }
  uint64_t window_begin() const { return window_begin_; }
  uint64_t window_end() const { return window_end_; }

  // The byte at `offset`; at or past the end of the file 0, with a log line at level 3.
  uint8_t ReadByte(uint64_t offset) {
    const uint64_t in_window = offset - window_begin_;
    if (in_window < loaded_size_) return window_[in_window];
    return ReadByteOutsideWindow(offset);
  }

  // Big-endian 32 bits out of four single reads.
  uint32_t ReadBigEndian32(uint64_t offset);

  // The same without moving the window: for one look far away, as the links of a chain want it.
  uint32_t PeekBigEndian32(uint64_t offset);

  // A copy of `length` bytes from `offset`. Throws std::out_of_range past the end of the file,
  // after a log line at level 3.
  FileSlice ReadRange(uint64_t offset, uint64_t length);

  // The same copied to `out`, without an allocation.
  void ReadRangeTo(uint64_t offset, uint64_t length, uint8_t* out);

  // Throws as ReadRange does when the range leaves the file.
  void CheckRange(uint64_t offset, uint64_t length) const;

 private:
  static constexpr uint64_t kMaxWindowSize = 4194304;

  uint8_t ReadByteOutsideWindow(uint64_t offset);
  uint8_t ReadByteThroughBlocks(uint64_t offset);
  uint8_t PeekByte(uint64_t offset);
  void LoadWindow();
  void Load(uint64_t offset, uint64_t length, uint8_t* out);
  std::string DescribeAccessPastEnd(int line) const;

  std::unique_ptr<uint8_t[]> window_;
  uint64_t loaded_size_ = 0;  // of the window; 0 while nothing of it was asked for
  uint64_t file_size_ = 0;
  uint64_t window_begin_ = 0;
  uint64_t window_end_ = 0;
  int32_t status_ = 0;
  std::string path_;
  std::fstream stream_;
  FileBlocks blocks_;
};

inline uint64_t SourceSize(const FileDataBuf& file) { return file.file_size(); }
