#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "scansqlite/carving/carved_record.h"
#include "storager/bound_row.h"
#include "storager/row_sink.h"
#include "storager/row_value.h"

// The rows of one page, on their way into the result: row ids are guessed over a whole page. Pages
// are asked for while their rows are saved, so that one statement takes the rows of them all.
class RowBatch {
 public:
  // `row_id_column` as RowIdColumnOf gives it.
  RowBatch(RowSink& sink, const std::string& row_id_column, bool guess_row_ids);

  // The values of the batch, one row behind the other. A row is appended here and then made good
  // with Commit; what its texts and blobs point to stays in place until the next page.
  std::vector<BoundValue>& values() { return values_; }
  void Commit(const RowIdHint& hint);

  // Whether a row can be known by its key before the page is complete: no row id is guessed for it.
  bool CanKnow() const { return can_know_; }
  // The fields that IsKnown looks at, and room for their values.
  const std::vector<uint32_t>& key_fields() const { return sink_.unique_fields(); }
  BoundValue* key_row() { return key_row_.data(); }
  // Whether the values in `key_row` are those of a row that was saved. Such a record only counts as
  // a neighbour whose row id is known.
  bool IsKnown() { return sink_.IsKnown(key_row_.data()); }
  void CommitKnown(const RowIdHint& hint);

  // Adds a row that the general test made.
  void Add(RowValue row, const RowIdHint& hint);

  // Guesses row ids if the table asks for that: the rows of the page are complete.
  void EndPage();

  // Forgets the rows: those of a page that the end of the source cuts are never saved.
  void Drop();

  // Saves the rows of page after page. `next_page` puts those of one page here and is false when
  // there is no further one; what it throws comes out here, behind the rows of the pages before.
  using NextPage = std::function<bool()>;
  void SavePages(const NextPage& next_page);

 private:
  class PageRows;

  static constexpr size_t kNoRow = ~size_t{0};

  void GuessRowIds();

  RowSink& sink_;
  bool guess_row_ids_;
  bool can_know_;
  std::vector<uint32_t> row_id_fields_;
  std::vector<BoundValue> key_row_;
  std::vector<BoundValue> values_;
  std::vector<RowIdHint> hints_;       // of all records of the page
  std::vector<size_t> rows_of_hints_;  // which row of values_ is theirs, or kNoRow
  size_t row_count_ = 0;
  std::deque<RowValue> owned_;
};
