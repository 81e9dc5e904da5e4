#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "recovery/scan_runner.h"
#include "recovery/truth.h"

namespace recovery {

// What a result says of one table, against what is true.
struct Counts {
  size_t live = 0;
  size_t live_found = 0;
  size_t standing = 0;         // deleted rows whose last state stands whole
  size_t recovered = 0;        // of these, with an equal row in the result
  size_t former = 0;           // former states of changed rows that stand whole
  size_t former_found = 0;     // of these, with an equal row in the result
  size_t carved = 0;           // rows of the result beyond the live ones
  size_t false_rows = 0;       // of these, equal to nothing that ever was
  size_t repeats = 0;          // of these, beyond the first for each version that ever was
  size_t missed_overflow = 0;  // standing and not recovered: with overflow pages
  size_t missed_log = 0;       // standing and not recovered: not in the database alone

  void Add(const Counts& other);

  // Shares; 1 where there is nothing to find.
  double LiveShare() const;
  double Recall() const;
  double Precision() const;  // of the carved rows that are no repeats
};

// Examples of what went wrong, as text.
struct Examples {
  std::vector<std::string> false_rows;
  std::vector<std::string> missed;
};

// Compares in all result columns besides the row id. NULL, 0, empty texts and empty blobs are the
// same, as the library reads one for the other where a record is short; numbers are compared by
// value, texts and blobs by their bytes, both without the control characters that the library
// takes out of texts.
Counts Compare(const TableTruth& truth, const ResultTable* result, const std::string& row_id_column,
               size_t most_examples, Examples& examples);

// The form in which two values are compared.
std::string ComparedForm(const Value& value);

}  // namespace recovery
