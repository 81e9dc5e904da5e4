#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Size of the header at the start of every SQLite database file.
// https://www.sqlite.org/fileformat2.html#the_database_header
inline constexpr size_t kDbHeaderBytes = 100;

// The bytes of a file in memory, with some zero bytes behind them.
class FileBytes {
 public:
  FileBytes() = default;
  FileBytes(size_t size, size_t spare);

  uint8_t* data() { return bytes_.get(); }
  const uint8_t* data() const { return bytes_.get(); }
  const uint8_t* begin() const { return bytes_.get(); }
  const uint8_t* end() const { return bytes_.get() + size_; }
  size_t size() const { return size_; }

 private:
  std::unique_ptr<uint8_t[]> bytes_;
  size_t size_ = 0;
};

// Loads the whole file at `path` (UTF-8) into `out`, with `spare` bytes behind it. False when it
// cannot be opened or read (one log line at level 3) and when it is empty (no line).
bool ReadWholeFile(const std::string& path, FileBytes& out, size_t spare = 0);

// Loads exactly the first 100 bytes of the file at `path` (UTF-8). False when it cannot be opened
// or read (one log line at level 3) and when it is shorter (no line, `out` empty).
bool ReadDbHeaderBytes(const std::string& path, std::vector<uint8_t>& out);

// Size in bytes of the file at `path`; false with errno set when it cannot be opened for reading.
bool MeasureFile(const std::string& path, uint64_t& size);
