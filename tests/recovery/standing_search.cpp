#include "recovery/standing_search.h"

#include <algorithm>
#include <bit>
#include <bitset>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace recovery {
namespace {

constexpr size_t kWindow = 8;

// The bytes at a place as a number, in the order of the machine; those behind `width` are 0.
uint64_t WindowAt(std::string_view bytes, size_t at, size_t width) {
  uint64_t window = 0;
  if (at + kWindow > bytes.size()) {
    std::memcpy(&window, bytes.data() + at, width);
    return window;
  }
  // A copy of fixed size is one instruction.
  std::memcpy(&window, bytes.data() + at, kWindow);
  const auto cut = static_cast<unsigned>((kWindow - width) * 8);
  return std::endian::native == std::endian::little ? window << cut >> cut : window >> cut << cut;
}

struct Pattern {
  size_t record = 0;
  std::string_view local;  // serial types and what of the body stays in the cell's page
  std::string_view rest;   // what stands in overflow pages
  size_t anchor = 0;       // place of the window by which it is looked for
};

// Patterns of one window width, by the window that is rarest among them all: a window of serial
// types alone is shared by most rows of a table.
class WindowIndex {
 public:
  explicit WindowIndex(size_t width) : width_(width) {}

  void Add(Pattern pattern) { patterns_.push_back(pattern); }

  void Build() {
    std::unordered_map<uint64_t, size_t> count;
    const auto each = [this](const Pattern& pattern, const auto& use) {
      const size_t last = pattern.local.size() - width_;
      for (size_t at = 0;; at += 4) {
        use(std::min(at, last));
        if (at >= last || at > 400) return;
      }
    };
    for (const Pattern& pattern : patterns_) {
      each(pattern, [&](size_t at) { ++count[WindowAt(pattern.local, at, width_)]; });
    }
    for (Pattern& pattern : patterns_) {
      size_t least = SIZE_MAX;
      each(pattern, [&](size_t at) {
        const size_t times = count[WindowAt(pattern.local, at, width_)];
        if (times < least) {
          least = times;
          pattern.anchor = at;
        }
      });
      const uint64_t window = WindowAt(pattern.local, pattern.anchor, width_);
      by_window_[window].push_back(&pattern);
      filter_->set(Slot(window));
    }
  }

  // Calls `use` with each pattern and the place where its local part stands whole.
  template <typename Use>
  void Search(std::string_view bytes, const Use& use) const {
    if (patterns_.empty() || bytes.size() < width_) return;
    for (size_t at = 0; at + width_ <= bytes.size(); ++at) {
      const uint64_t window = WindowAt(bytes, at, width_);
      if (!filter_->test(Slot(window))) continue;
      const auto found = by_window_.find(window);
      if (found == by_window_.end()) continue;
      for (const Pattern* pattern : found->second) {
        if (at < pattern->anchor) continue;
        const size_t begin = at - pattern->anchor;
        if (bytes.substr(begin, pattern->local.size()) == pattern->local) use(*pattern, begin);
      }
    }
  }

 private:
  static constexpr size_t kSlots = size_t{1} << 20U;

  static size_t Slot(uint64_t window) {
    return static_cast<size_t>((window * 0x9e3779b97f4a7c15U) >> 44U);
  }

  size_t width_;
  std::vector<Pattern> patterns_;
  std::unordered_map<uint64_t, std::vector<const Pattern*>> by_window_;
  std::unique_ptr<std::bitset<kSlots>> filter_ = std::make_unique<std::bitset<kSlots>>();
};

// Whether `rest` can be read along the chain that begins at a page; `main_only` tells if the
// database alone gives it.
bool ChainStands(const Evidence& evidence, std::string_view rest, uint32_t page, bool main_only) {
  const size_t room = evidence.page_size() - 4;
  const std::string_view part = rest.substr(0, room);
  for (const std::string_view state : evidence.States(page)) {
    if (main_only && evidence.PlaceOf(state).first != 0) return false;
    if (state.substr(4, part.size()) != part) continue;
    if (rest.size() <= room) return true;
    if (ChainStands(evidence, rest.substr(room), BigEndianNumber(state.substr(0, 4)), main_only)) {
      return true;
    }
  }
  return false;
}

bool Inside(const std::vector<Span>& spans, size_t begin, size_t end) {
  const auto after = std::upper_bound(spans.begin(), spans.end(), begin,
                                      [](size_t at, const Span& span) { return at < span.begin; });
  return after != spans.begin() && std::prev(after)->end >= end;
}

void Judge(const Evidence& evidence, size_t file, const Pattern& pattern, size_t begin,
           Standing& standing) {
  if (pattern.rest.empty()) {
    standing.found = true;
    standing.in_main = standing.in_main || file == 0;
    return;
  }
  const std::string_view number = evidence.File(file).substr(begin + pattern.local.size(), 4);
  if (number.size() < 4) return;
  const uint32_t page = BigEndianNumber(number);
  standing.found = standing.found || ChainStands(evidence, pattern.rest, page, false);
  standing.in_main =
      standing.in_main || (file == 0 && ChainStands(evidence, pattern.rest, page, true));
}

}  // namespace

std::vector<Standing> FindStanding(const Evidence& evidence, const std::vector<Wanted>& wanted,
                                   const std::vector<std::vector<Span>>& used) {
  std::vector<Standing> standings(wanted.size());
  std::map<size_t, WindowIndex> indexes;
  for (size_t i = 0; i < wanted.size(); ++i) {
    const std::string_view payload = wanted[i].record.payload;
    const size_t skipped = wanted[i].record.skipped;
    const size_t local = LocalPayload(payload.size(), evidence.page_size());
    const Pattern pattern{i, payload.substr(skipped, local - skipped), payload.substr(local), 0};
    standings[i].overflows = !pattern.rest.empty();
    if (pattern.local.empty()) continue;
    const size_t width = std::min(kWindow, pattern.local.size());
    indexes.try_emplace(width, width).first->second.Add(pattern);
  }
  for (auto& [width, index] : indexes) {
    index.Build();
    for (size_t file = 0; file < 2; ++file) {
      index.Search(evidence.File(file), [&](const Pattern& pattern, size_t begin) {
        Standing& standing = standings[pattern.record];
        if (standing.found && standing.in_main) return;
        if (!wanted[pattern.record].also_in_use &&
            Inside(used[file], begin, begin + pattern.local.size())) {
          return;
        }
        Judge(evidence, file, pattern, begin, standing);
      });
    }
  }
  return standings;
}

}  // namespace recovery
