#pragma once

// HOT CODE. The full test of a position that survived the sieve, on bytes that are in memory and
// without an allocation. It gives the same verdict and the same row as TestPosition, which stays
// the general test: wherever a record needs more than its page (overflow chains), changes its own
// bytes (texts with control characters) or reaches over what is in memory, this test leaves the
// verdict to it.

#include <cstdint>
#include <vector>

#include "scansqlite/carving/byte_view.h"
#include "scansqlite/carving/carved_record.h"
#include "scansqlite/carving/header_cells.h"
#include "scansqlite/carving/record_plan.h"
#include "storager/bound_row.h"

enum class Verdict {
  kMiss,
  kHit,
  kOpen,  // the general test decides
};

// One value of the record under test. An alias has none, nor has it bytes.
struct RecordValue {
  uint64_t serial_type = 0;
  const uint8_t* bytes = nullptr;  // into the view; of a constant its own byte
  uint32_t length = 0;             // a constant has one byte
};

class RecordTest {
 public:
  explicit RecordTest(const RecordPlan& plan);

  // Whether a record of the layout stands at `position`.
  Verdict Test(const ByteView& view, uint64_t position);

  // The same behind a header that was just read there for this layout and others, and stays until
  // the row is built.
  Verdict TestBehind(const HeaderCells& header, const ByteView& view, uint64_t position);

  // What is known of the row id of the record that was just accepted.
  RowIdHint FindRowId(const ByteView& view, uint64_t position) const;

  // Appends the row of that record, one value for each result column. Texts and blobs point into
  // the view. False when a text has to be cleaned: the general test makes the row.
  bool BuildRow(const RowIdHint& hint, std::vector<BoundValue>& row) const;

  // Sets only some values of a row that has room for all; false also when one is not of the kind
  // that its column is for.
  bool BuildFields(const std::vector<uint32_t>& fields, BoundValue* row) const;

  const RecordPlan& plan() const { return plan_; }

 private:
  Verdict TestHeader(const ByteView& view);
  bool HoldsValue() const;
  RecordValue ValueAt(size_t column) const;
  bool PassesAsNumber(const ValueCheck& check) const;
  Verdict CheckValues() const;
  bool BuildUsualValue(const FieldSource& source, BoundValue& out) const;
  bool BuildValue(const FieldSource& source, const RowIdHint& hint, BoundValue& out) const;

  const RecordPlan& plan_;
  HeaderCells own_header_;
  const HeaderCells* header_ = nullptr;
  size_t count_ = 0;  // cells, an alias counted
  const uint8_t* body_ = nullptr;
  uint32_t serial_bytes_ = 0;
  uint32_t data_bytes_ = 0;
};
