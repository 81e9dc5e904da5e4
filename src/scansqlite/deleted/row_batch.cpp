#include "scansqlite/deleted/row_batch.h"

#include <utility>

#include "scansqlite/deleted/guess_row_ids.h"

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
  for (size_t row = 0; row < hints_.size(); ++row) sink_.Save(values_.data() + row * fields);
  Drop();
}

void RowBatch::Drop() {
  values_.clear();
  hints_.clear();
  owned_.clear();
}
