#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

// Size of the header at the start of every SQLite database file.
// https://www.sqlite.org/fileformat2.html#the_database_header
inline constexpr size_t kDbHeaderBytes = 100;

// Reads the file at `path` (UTF-8) to its end without keeping anything, and gives its size. False
// when it cannot be opened or read (one log line at level 3) and when it is empty (no line).
bool ReadThrough(const std::string& path, uint64_t& size);

// Loads exactly the first 100 bytes of the file at `path` (UTF-8). False when it cannot be opened
// or read (one log line at level 3) and when it is shorter (no line, `out` empty).
bool ReadDbHeaderBytes(const std::string& path, std::vector<uint8_t>& out);

// Reads `length` bytes from `offset` on. Bytes that the file lacks, since it became shorter, are 0.
void ReadAt(std::istream& stream, uint64_t offset, uint64_t length, uint8_t* out);

// Size in bytes of the file at `path`; false with errno set when it cannot be opened for reading.
bool MeasureFile(const std::string& path, uint64_t& size);
