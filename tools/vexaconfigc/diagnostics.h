#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vexaconfigc {

// Collects what is wrong or doubtful in the sources, so that one run shows all of it. Lines of one
// file come out in the order of their line numbers.
class Diagnostics {
 public:
  // The source cannot be compiled.
  void Error(const std::string& file, int line, const std::string& words);
  // It can, but records will be lost or invented because of this.
  void Warning(const std::string& file, int line, const std::string& words);

  bool HasErrors() const { return error_count_ != 0; }

  // Writes "FILE:LINE: error: WORDS", one to a line.
  void Print(std::ostream& out) const;

 private:
  struct Entry {
    std::string file;
    int line;
    bool is_error;
    std::string words;
  };
  std::vector<Entry> entries_;
  int error_count_ = 0;
};

}  // namespace vexaconfigc
