#pragma once

#include <deque>
#include <string>
#include <vector>

#include "scansqlite/carving/carved_record.h"
#include "storager/bound_row.h"
#include "storager/row_sink.h"
#include "storager/row_value.h"

// The rows of one page, waiting to be saved: row ids are guessed over a whole page.
class RowBatch {
 public:
  // `row_id_column` as RowIdColumnOf gives it.
  RowBatch(RowSink& sink, const std::string& row_id_column, bool guess_row_ids);

  // The values of the batch, one row behind the other. A row is appended here and then made good
  // with Commit; what its texts and blobs point to stays in place until Flush.
  std::vector<BoundValue>& values() { return values_; }
  void Commit(const RowIdHint& hint) { hints_.push_back(hint); }

  // Adds a row that the general test made.
  void Add(RowValue row, const RowIdHint& hint);

  bool empty() const { return hints_.empty(); }

  // Guesses row ids if the table asks for that, saves the rows and forgets them.
  void Flush();

  // Forgets the rows: those of a page that the end of the source cuts are never saved.
  void Drop();

 private:
  RowSink& sink_;
  bool guess_row_ids_;
  std::vector<uint32_t> row_id_fields_;
  std::vector<BoundValue> values_;
  std::vector<RowIdHint> hints_;
  std::deque<RowValue> owned_;
};
