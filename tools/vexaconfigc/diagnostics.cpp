#include "diagnostics.h"

#include <algorithm>
#include <ostream>
#include <tuple>

namespace vexaconfigc {

void Diagnostics::Error(const std::string& file, int line, const std::string& words) {
  entries_.push_back({file, line, true, words});
  ++error_count_;
}

void Diagnostics::Warning(const std::string& file, int line, const std::string& words) {
  entries_.push_back({file, line, false, words});
}

void Diagnostics::Print(std::ostream& out) const {
  std::vector<Entry> sorted = entries_;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.file, a.line) < std::tie(b.file, b.line);
  });
  for (const Entry& entry : sorted) {
    out << entry.file << ':' << entry.line << ": " << (entry.is_error ? "error" : "warning") << ": "
        << entry.words << '\n';
  }
}

}  // namespace vexaconfigc
