#include "scansqlite/deleted/guess_row_ids.h"

#include <cstdint>
#include <optional>

namespace {

int64_t AddWrapping(int64_t row_id, uint64_t distance) {
  return static_cast<int64_t>(static_cast<uint64_t>(row_id) + distance);
}

// For each entry the nearest one above that has a row id.
std::vector<std::optional<size_t>> FindAnchorsAbove(const std::vector<RowIdHint>& hints) {
  std::vector<std::optional<size_t>> above(hints.size());
  std::optional<size_t> anchor;
  for (size_t i = hints.size(); i-- > 0;) {
    above[i] = anchor;
    if (hints[i].has_row_id) anchor = i;
  }
  return above;
}

int64_t GuessBetween(const std::vector<RowIdHint>& hints, size_t at, std::optional<size_t> prev,
                     std::optional<size_t> next) {
  const bool by_prev = prev && (!next || *next - at >= at - *prev);
  if (by_prev) return AddWrapping(hints[*prev].row_id, uint64_t{0} - (at - *prev));
  if (next) return AddWrapping(hints[*next].row_id, *next - at);
  return 0;
}

}  // namespace

void ForEachGuessedRowId(const std::vector<RowIdHint>& hints,
                         const std::function<void(size_t, int64_t)>& take) {
  const std::vector<std::optional<size_t>> above = FindAnchorsAbove(hints);
  std::optional<size_t> below;
  for (size_t i = 0; i < hints.size(); ++i) {
    if (hints[i].has_row_id) {
      below = i;
    } else {
      take(i, GuessBetween(hints, i, below, above[i]));
    }
  }
}
