#include "scansqlite/deleted/row_batch.h"

#include <algorithm>
#include <utility>

#include "scansqlite/deleted/guess_row_ids.h"

// The rows of all pages. A page is asked for when the rows of the one before are saved, not
// earlier, so that a stop that comes meanwhile is seen in front of it.
class RowBatch::PageRows : public RowSource {
 public:
  PageRows(RowBatch& batch, const NextPage& next_page) : batch_(batch), next_page_(next_page) {}

  // Goes on to a page that has rows; false when none has.
  bool GoToRows() {
    while (next_ == batch_.row_count_ && !at_end_) {
      batch_.Drop();
      next_ = 0;
      at_end_ = !next_page_();
    }
    return !at_end_;
  }

  const BoundValue* Next() override {
    if (!GoToRows()) return nullptr;
    return batch_.values_.data() + next_++ * batch_.sink_.field_count();
  }

 private:
  RowBatch& batch_;
  const NextPage& next_page_;
  size_t next_ = 0;
  bool at_end_ = false;
};

RowBatch::RowBatch(RowSink& sink, const std::string& row_id_column, bool guess_row_ids)
    : sink_(sink),
      guess_row_ids_(guess_row_ids),
      can_know_(sink.KeepsKeys()),
      key_row_(sink.field_count()) {
  for (uint32_t i = 0; i < sink.field_count(); ++i) {
    if (sink.fields()[i].field_name == row_id_column) row_id_fields_.push_back(i);
  }
  for (const uint32_t field : sink.unique_fields()) {
    const auto at = std::find(row_id_fields_.begin(), row_id_fields_.end(), field);
    if (at != row_id_fields_.end()) can_know_ = false;
  }
}

void RowBatch::Commit(const RowIdHint& hint) {
  hints_.push_back(hint);
  rows_of_hints_.push_back(row_count_++);
}

void RowBatch::CommitKnown(const RowIdHint& hint) {
  hints_.push_back(hint);
  rows_of_hints_.push_back(kNoRow);
}

void RowBatch::Add(RowValue row, const RowIdHint& hint) {
  owned_.push_back(std::move(row));
  BindRowValue(sink_.fields(), owned_.back(), values_);
  Commit(hint);
}

void RowBatch::GuessRowIds() {
  const size_t fields = sink_.field_count();
  ForEachGuessedRowId(hints_, [&](size_t hint, int64_t row_id) {
    const size_t row = rows_of_hints_[hint];
    if (row == kNoRow) return;
    for (const uint32_t field : row_id_fields_) {
      // A text under the same name goes before any number.
      BoundValue& value = values_[row * fields + field];
      if (value.kind != kFieldText) value = BoundValue::Integer(row_id);
    }
  });
}

void RowBatch::EndPage() {
  if (row_count_ != 0 && guess_row_ids_ && !row_id_fields_.empty()) GuessRowIds();
}

void RowBatch::Drop() {
  values_.clear();
  hints_.clear();
  rows_of_hints_.clear();
  row_count_ = 0;
  owned_.clear();
}

void RowBatch::SavePages(const NextPage& next_page) {
  PageRows rows(*this, next_page);
  if (rows.GoToRows()) sink_.SaveAll(rows);
  Drop();
}
