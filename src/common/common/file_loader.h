#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Size of the header at the start of every SQLite database file.
// https://www.sqlite.org/fileformat2.html#the_database_header
inline constexpr size_t kDbHeaderBytes = 100;

// Loads the whole file at `path` (UTF-8) into `out`. False when it cannot be opened or read (one
// log line at level 3) and when it is empty (no line). `out` can then grow by `spare` bytes without
// moving.
bool ReadWholeFile(const std::string& path, std::vector<uint8_t>& out, size_t spare = 0);

// Loads exactly the first 100 bytes of the file at `path` (UTF-8). False when it cannot be opened
// or read (one log line at level 3) and when it is shorter (no line, `out` empty).
bool ReadDbHeaderBytes(const std::string& path, std::vector<uint8_t>& out);

// Size in bytes of the file at `path`; false with errno set when it cannot be opened for reading.
bool MeasureFile(const std::string& path, uint64_t& size);
