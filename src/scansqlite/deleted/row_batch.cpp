#include "scansqlite/deleted/row_batch.h"

#include <algorithm>
#include <utility>

#include "scansqlite/deleted/guess_row_ids.h"

namespace {

class BatchRows : public RowSource {
 public:
  BatchRows(const std::vector<BoundValue>& values, size_t fields, size_t rows)
      : values_(values), fields_(fields), rows_(rows) {}

  const BoundValue* Next() override {
    return next_ == rows_ ? nullptr : values_.data() + next_++ * fields_;
  }

 private:
  const std::vector<BoundValue>& values_;
  size_t fields_;
  size_t rows_;
  size_t next_ = 0;
};

}  // namespace

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

void RowBatch::Flush() {
  if (row_count_ != 0) {
    if (guess_row_ids_ && !row_id_fields_.empty()) GuessRowIds();
    BatchRows rows(values_, sink_.field_count(), row_count_);
    sink_.SaveAll(rows);
  }
  Drop();
}

void RowBatch::Drop() {
  values_.clear();
  hints_.clear();
  rows_of_hints_.clear();
  row_count_ = 0;
  owned_.clear();
}
