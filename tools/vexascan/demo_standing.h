// Which deleted messages could come back at all: those whose record still stands in the bytes of
// the sample, whole. Found by writing the record as SQLite does and searching for it, without any
// knowledge of how the library searches.
#pragma once

#include <filesystem>
#include <string>

#include "demo_messages.h"

namespace vexascan {

class StandingBytes {
 public:
  // Reads the database and the log beside it.
  explicit StandingBytes(const std::filesystem::path& database);

  // True when all values of the message's record stand together in the main file or the log. A
  // record that overflows must also have its whole chain of pages in the main file.
  bool Holds(const Message& message) const;

 private:
  bool FindWhole(const std::string& values) const;
  bool FindChained(const std::string& values, std::size_t local) const;
  bool ChainHolds(std::string_view rest, std::uint32_t page) const;

  std::string database_;
  std::string log_;
  std::size_t page_size_;
};

}  // namespace vexascan
