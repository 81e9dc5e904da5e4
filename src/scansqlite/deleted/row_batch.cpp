#include "scansqlite/deleted/row_batch.h"

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
    : sink_(sink), guess_row_ids_(guess_row_ids) {
  for (uint32_t i = 0; i < sink.field_count(); ++i) {
    if (sink.fields()[i].field_name == row_id_column) row_id_fields_.push_back(i);
  }
}

void RowBatch::Add(RowValue row, const RowIdHint& hint) {
  owned_.push_back(std::move(row));
  BindRowValue(sink_.fields(), owned_.back(), values_);
  hints_.push_back(hint);
}

void RowBatch::Flush() {
  if (hints_.empty()) return;
  const size_t fields = sink_.field_count();
  if (guess_row_ids_ && !row_id_fields_.empty()) {
    ForEachGuessedRowId(hints_, [&](size_t row, int64_t row_id) {
      for (const uint32_t field : row_id_fields_) {
        // A text under the same name goes before any number.
        BoundValue& value = values_[row * fields + field];
        if (value.kind != kFieldText) value = BoundValue::Integer(row_id);
      }
    });
  }
  BatchRows rows(values_, fields, hints_.size());
  sink_.SaveAll(rows);
  Drop();
}

void RowBatch::Drop() {
  values_.clear();
  hints_.clear();
  owned_.clear();
}
