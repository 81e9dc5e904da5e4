#include "support/log_capture.h"

#include <fstream>
#include <ostream>
#include <regex>

#include "vexalogsdk/vexa_log_sdk.h"

namespace {

constexpr const char* kFileName = "captured.log";

int LevelOfWord(const std::string& word) {
  if (word == "error") return 3;
  if (word == "warning") return 2;
  return word == "info" ? 1 : 0;
}

}  // namespace

void PrintTo(const LogLine& line, std::ostream* out) {
  *out << "{" << line.level << ", \"" << line.message << "\"}";
}

std::vector<LogLine> ReadLogFile(const std::string& path) {
  // Only the prefix is matched: a message may be of any length.
  static const std::regex kPrefix(
      "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z (\\w+) (\\S*) ");
  constexpr size_t kLongestPrefix = 128;
  std::vector<LogLine> lines;
  std::ifstream file(path, std::ios::binary);
  for (std::string text; std::getline(file, text);) {
    const std::string head = text.substr(0, kLongestPrefix);
    std::smatch match;
    if (std::regex_search(head, match, kPrefix)) {
      lines.push_back({LevelOfWord(match[1]), text.substr(static_cast<size_t>(match[0].length()))});
    } else if (!lines.empty()) {
      lines.back().message += "\n" + text;
    }
  }
  return lines;
}

LogCapture::LogCapture() { InitLogEx("", "VexaSqliteSDK", folder_.File(kFileName).c_str()); }

LogCapture::~LogCapture() { UninitLog(); }

std::vector<LogLine> LogCapture::Lines() const {
  std::vector<LogLine> lines = ReadLogFile(folder_.File(kFileName));
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(forgotten_));
  return lines;
}

std::vector<std::string> LogCapture::Messages() const {
  std::vector<std::string> messages;
  for (LogLine& line : Lines()) messages.push_back(std::move(line.message));
  return messages;
}

void LogCapture::Clear() { forgotten_ += Lines().size(); }
