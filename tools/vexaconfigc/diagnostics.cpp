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
  const auto acceptance = accepted_.find({file, line});
  if (acceptance != accepted_.end()) {
    acceptance->second.met = true;
    return;
  }
  entries_.push_back({file, line, false, words});
}

void Diagnostics::Accept(const std::string& file, int line, int reason_line) {
  accepted_[{file, line}] = {reason_line, false};
}

void Diagnostics::CheckAccepted() {
  for (const auto& [place, acceptance] : accepted_) {
    if (acceptance.met) continue;
    Error(place.first, acceptance.reason_line,
          "nothing is doubtful about this entry: leave 'despite' out");
  }
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
