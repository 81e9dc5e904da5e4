#include "scansqlite/deleted/table_pass.h"

#include "common/common/scan_control.h"
#include "scansqlite/deleted/guess_row_ids.h"
#include "storager/save_row.h"

std::string RowIdColumnOf(const ResultFieldMap& result_fields) {
  std::string column;
  for (const auto& [name, field] : result_fields) {
    if (field.is_row_id_field != 0) column = field.field_name;
  }
  return column;
}

void PageRows::Flush() {
  if (rows_.empty()) return;
  if (pass_.guess_row_ids) GuessRowIds(hints_, pass_.row_id_column, rows_);
  for (const RowValue& row : rows_) SaveRow(*pass_.fields, row, *pass_.insert);
  rows_.clear();
  hints_.clear();
}

bool MayGoOn() {
  if (ReadScanControl() == kScanStopped) return false;
  // Volatile, so that the wait for a value that never changes is not optimised away.
  const volatile int32_t seen = ReadScanControl();
  while (seen == kScanPaused) {
  }
  return true;
}
