#include "reference/plain_rows.h"

#include <algorithm>
#include <optional>

#include "common/common/scan_control.h"
#include "reference/save_row.h"

namespace plain_walk {

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

void GuessRowIds(const std::vector<RowIdHint>& hints, const std::string& row_id_column,
                 std::vector<RowValue>& rows) {
  const std::vector<std::optional<size_t>> above = FindAnchorsAbove(hints);
  std::optional<size_t> below;
  for (size_t i = 0; i < std::min(hints.size(), rows.size()); ++i) {
    if (hints[i].has_row_id) {
      below = i;
      continue;
    }
    SetIntegerValue(rows[i], row_id_column, GuessBetween(hints, i, below, above[i]));
  }
}

void PageRows::Flush() {
  if (rows_.empty()) return;
  if (pass_.hits != nullptr) TakeHits();
  if (pass_.insert != nullptr) {
    if (pass_.guess_row_ids) GuessRowIds(hints_, pass_.row_id_column, rows_);
    for (const RowValue& row : rows_) SaveRow(*pass_.fields, row, *pass_.insert);
  }
  rows_.clear();
  hints_.clear();
  positions_.clear();
}

void PageRows::TakeHits() const {
  for (size_t i = 0; i < hints_.size(); ++i) {
    pass_.hits->push_back({pass_.table, pass_.number, positions_[i], hints_[i]});
  }
}

bool MayGoOn() {
  if (ReadScanControl() == kScanStopped) return false;
  // Volatile, so that the wait for a value that never changes is not optimised away.
  const volatile int32_t seen = ReadScanControl();
  while (seen == kScanPaused) {
  }
  return true;
}

}  // namespace plain_walk
