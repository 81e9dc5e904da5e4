#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "support/temp_folder.h"

// One message of the log: 0 debug, 1 info, 2 warning, 3 error.
struct LogLine {
  int level = 0;
  std::string message;

  bool operator==(const LogLine&) const = default;
};

// Prints a failing expectation's value.
void PrintTo(const LogLine& line, std::ostream* out);

// The lines of a log file, in order. A line feed inside a message continues the message.
std::vector<LogLine> ReadLogFile(const std::string& path);

// Sends the log of the process into a file of its own for as long as it stands.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // What was logged so far, without time and module.
  std::vector<LogLine> Lines() const;

  // The messages alone.
  std::vector<std::string> Messages() const;

  // Forgets what was logged so far.
  void Clear();

 private:
  TempFolder folder_;
  size_t forgotten_ = 0;
};
