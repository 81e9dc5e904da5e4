#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <utility>
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

  // The writer of the source knows what is doubtful about the entry that begins on this line, and
  // says on another line why it stays: warnings about the entry are left out.
  void Accept(const std::string& file, int line, int reason_line);
  // To be called behind all checks: a reason that no warning met is an error, since it speaks of a
  // doubt that is gone.
  void CheckAccepted();

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
  struct Acceptance {
    int reason_line = 0;
    bool met = false;
  };

  std::vector<Entry> entries_;
  std::map<std::pair<std::string, int>, Acceptance> accepted_;  // by file and line of the entry
  int error_count_ = 0;
};

}  // namespace vexaconfigc
