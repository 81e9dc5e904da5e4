#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "scansqlite/carving/carve_layout.h"
#include "scansqlite/sieve/serial_type_set.h"
#include "sqliteconfig/config_records.h"

// One check of a value. Entries of several feature maps that say the same become one.
struct ValueCheck {
  uint32_t column = 0;
  const FieldFeature* feature = nullptr;
  // By byte value: 1 where a text or blob may not hold it. Empty: it may hold any.
  std::vector<uint8_t> refused_bytes;
  // Of a check that reads a number first: what surely passes.
  bool takes_number = false;
  bool admits_null = false;
  int64_t lowest = 0;
  int64_t highest = 0;
  // Some check of the column reads a text, which cleans the bytes for all that come after it.
  bool reads_after_cleaning = false;
};

// Where one column of the result takes its value from.
struct FieldSource {
  bool is_row_id = false;
  bool is_absent = false;  // no result field has the name: NULL
  bool is_usual = false;   // an integer or a text of a column
  int32_t column = 0;
  int32_t field_type = 0;
};

// A layout made ready for the test in record_test.h: the rules of all columns as bit sets, the
// checks merged and ordered by cost, the result columns in the order of the insert statement.
// Borrows from the layout.
struct RecordPlan {
  // By the first byte of a column's serial type: how many bytes its value has, kRefused, or that
  // the serial type has more bytes.
  static constexpr uint8_t kRefused = 0x80;
  static constexpr uint8_t kLongType = 0x81;
  using ByteLengths = std::array<uint8_t, 256>;

  const CarveLayout* layout = nullptr;
  size_t first = 0;     // 1 behind a row id alias
  size_t width = 0;     // columns, the alias counted
  size_t required = 0;  // cells, the alias counted
  std::vector<SerialTypeSet> sets;
  std::vector<ByteLengths> byte_lengths;  // the same for one look a column
  std::vector<uint8_t> is_primary_key;
  std::vector<ValueCheck> checks;
  std::vector<FieldSource> fields;
  // False when only the general test gives the right rows: UTF-16, whose conversion can throw so
  // that the order of all tests shows, a field type that drops rows, or odd row id columns.
  bool is_fast = false;
};

// `depth` as the source allows: kValues only where a record that fails could have had no effect.
RecordPlan MakeRecordPlan(const CarveLayout& layout, const TableFields& fields, SetDepth depth);
