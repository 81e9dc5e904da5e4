#include "scansqlite/carving/position_test.h"

bool HoldsAValue(const CarveLayout& layout, const SerialTypeCells& cells) {
  if (layout.columns.size() < cells.size()) return false;
  for (size_t i = 0; i < cells.size(); ++i) {
    if (!layout.columns[i].is_primary_key && cells[i].storage_class >= 0) return true;
  }
  return false;
}

bool ValuesFit(const SerialTypeCells& cells, uint32_t limit) {
  return std::all_of(cells.begin(), cells.end(), [limit](const SerialTypeCell& cell) {
    return cell.payload_length <= kMaxValueBytes && cell.payload_length < limit;
  });
}
