#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "scansqlite/carving/carve_layout.h"
#include "scansqlite/carving/carved_record.h"
#include "scansqlite/carving/carved_row.h"
#include "scansqlite/carving/parse_serial_types.h"
#include "scansqlite/carving/validate_field.h"

// Layouts of at least this width may have written shorter records, before columns were added.
inline constexpr size_t kFlexibleWidth = 20;

// No carved value is longer.
inline constexpr uint32_t kMaxValueBytes = 20971520;

// The cheap tests of a position, from its serial types alone; `cells` is filled on success. Most
// positions fail at the first or second serial type.
template <typename Source>
bool ReadCandidateCells(const CarveLayout& layout, Source& source, uint64_t position,
                        SerialTypeCells& cells) {
  const size_t width = layout.columns.size();
  size_t wanted = width;
  cells.clear();
  if (layout.first_column_is_key) {
    SerialTypeCell alias;
    alias.header_bytes = 1;
    alias.storage_class = kClassNull;
    cells.push_back(alias);
    --wanted;
  }
  if (ParseSerialTypes(source, position, wanted, layout.columns, cells)) return true;
  if (width < kFlexibleWidth) return false;
  return static_cast<int64_t>(cells.size()) + layout.flexible_cnt >=
         static_cast<int64_t>(width) - 1;
}

// A record must hold at least one value that is neither NULL nor reserved and does not sit in an
// alias column.
bool HoldsAValue(const CarveLayout& layout, const SerialTypeCells& cells);

// Every value is shorter than `limit` and not longer than kMaxValueBytes.
bool ValuesFit(const SerialTypeCells& cells, uint32_t limit);

// Tests whether a record of the layout stands at `position`, which is read as the serial type of
// its first column, or of its second one behind a row id alias. Fills `row` and `hint` when one
// does. `cells` is scratch space.
template <typename Carver>
bool TestPosition(const CarveLayout& layout, Carver& carver, uint64_t position,
                  SerialTypeCells& cells, RowValue& row, RowIdHint& hint) {
  if (!ReadCandidateCells(layout, carver.source(), position, cells)) return false;
  if (!HoldsAValue(layout, cells) || !CheckFeatureClasses(cells, *layout.features)) return false;
  if (!ValuesFit(cells, carver.value_size_limit())) return false;
  CarvedRecord record = MeasureRecord(cells);
  std::vector<RawValue> values;
  if (!carver.CarveRecord(position, layout.first_column_is_key, cells, record, values)) {
    return false;
  }
  const uint32_t text_encoding = layout.header->text_encoding;
  if (!ValidateRecord(*layout.features, text_encoding, cells, values)) return false;
  row = RowValue();
  if (!BuildCarvedRow(values, record, *layout.result_fields, text_encoding, row)) return false;
  hint = {record.has_row_id, record.row_id};
  return true;
}
