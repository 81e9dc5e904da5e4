#include "scansqlite/sieve/serial_type_set.h"

#include <algorithm>
#include <limits>

#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/validate_field.h"

namespace {

constexpr uint32_t kShortTypes = 128;
constexpr uint64_t kSomeLongText = 129;
constexpr uint64_t kSomeLongBlob = 128;

struct Interval {
  int64_t low = 0;
  int64_t high = 0;
};

// The numbers that up to `bytes` bytes can hold. 0 is always one of them, so that a value which the
// end of the data cuts short is covered too.
Interval NumbersOf(uint32_t bytes) {
  if (bytes >= 8) return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()};
  const int64_t half = bytes == 0 ? 0 : int64_t{1} << (8 * bytes - 1);
  return {-half, half == 0 ? 0 : half - 1};
}

bool SomeNumberFits(const FieldFeature& feature, Interval numbers) {
  for (const ValueRange& range : feature.value_ranges) {
    numbers.low = std::max(numbers.low, range.min);
    numbers.high = std::min(numbers.high, range.max);
  }
  return numbers.low <= numbers.high;
}

// Whether some length from 0 to `longest` lies in the limits, which are compared unsigned.
bool SomeLengthFits(const FieldFeature& feature, uint64_t longest) {
  return std::all_of(feature.value_ranges.begin(), feature.value_ranges.end(),
                     [longest](const ValueRange& range) {
                       const auto shortest = static_cast<uint64_t>(range.min);
                       return shortest <= longest && shortest <= static_cast<uint64_t>(range.max);
                     });
}

// Whether a value of the cell, whole or cut short, could pass as the field type. Errs on the side
// of yes.
bool CouldPassAs(int32_t field_type, const FieldFeature& feature, const SerialTypeCell& cell) {
  const uint32_t length = cell.is_constant ? 1 : cell.payload_length;
  switch (field_type) {
    case kFieldNone:
      return false;
    case kFieldInteger:
      if (cell.is_null) return feature.is_not_null != 1;
      return SomeNumberFits(feature, cell.is_constant
                                         ? Interval{0, static_cast<int64_t>(cell.constant_value)}
                                         : NumbersOf(length));
    case kFieldReal:
      if (cell.is_null) return feature.is_not_null != 1;
      return length > 2 || SomeNumberFits(feature, NumbersOf(length));
    case kFieldText:
    case kFieldBlob:
      return feature.is_not_null != 1 || (length != 0 && SomeLengthFits(feature, length));
    default:
      return true;
  }
}

// `cells` ends with the cell of the column.
bool MatchesAllFeatures(const FeatureMaps& features, const SerialTypeCells& cells, SetDepth depth) {
  const SerialTypeCell& cell = cells.back();
  const auto column = static_cast<int32_t>(cells.size() - 1);
  for (const FeatureMap& map : features) {
    const auto at = map.find(column);
    if (at == map.end()) continue;
    const FieldFeature& feature = at->second;
    if (!MatchesFeature(cells, feature)) return false;
    if (depth == SetDepth::kClasses) continue;
    if (!CouldPassAs(feature.field_type, feature, cell) &&
        !CouldPassAs(feature.field_type_candidate, feature, cell)) {
      return false;
    }
  }
  return true;
}

SerialTypeSet MakeSet(const CarveLayout& layout, size_t column, SetDepth depth) {
  SerialTypeCells cells(column + 1);
  const auto admits = [&](uint64_t serial_type, SetDepth to) {
    SerialTypeCell cell;
    cell.serial_type = serial_type;
    DecodeSerialType(cell);
    cells.back() = cell;
    return ColumnAllows(layout.columns[column], cell.storage_class) &&
           MatchesAllFeatures(*layout.features, cells, to);
  };
  SerialTypeSet set;
  for (uint32_t type = 0; type < kShortTypes; ++type) {
    if (admits(type, depth)) set.short_types[type >> 6] |= uint64_t{1} << (type & 63U);
  }
  // A long value can be cut to any length, so the limits say nothing about it.
  set.long_text = admits(kSomeLongText, SetDepth::kClasses);
  set.long_blob = admits(kSomeLongBlob, SetDepth::kClasses);
  return set;
}

// The cell of the alias column is made up: no NULL, but of serial type 0.
bool AliasMatches(const CarveLayout& layout) {
  SerialTypeCells cells(1);
  for (const FeatureMap& map : *layout.features) {
    const auto at = map.find(0);
    if (at != map.end() && !MatchesFeature(cells, at->second)) return false;
  }
  return true;
}

}  // namespace

std::vector<SerialTypeSet> MakeSerialTypeSets(const CarveLayout& layout, SetDepth depth) {
  std::vector<SerialTypeSet> sets;
  for (size_t column = 0; column < layout.columns.size(); ++column) {
    sets.push_back(MakeSet(layout, column, depth));
  }
  return sets;
}

size_t RequiredCells(const CarveLayout& layout) {
  const size_t width = layout.columns.size();
  const size_t never = width + 1;
  if (layout.first_column_is_key && !AliasMatches(layout)) return never;
  int64_t required = static_cast<int64_t>(width);
  if (width >= kFlexibleWidth) required = std::min(required, required - 1 - layout.flexible_cnt);
  // A negative flexible_cnt asks for more cells than there are only of records that break off.
  required = std::clamp<int64_t>(required, layout.first_column_is_key ? 1 : 0,
                                 static_cast<int64_t>(width));
  for (const FeatureMap& map : *layout.features) {
    for (const auto& [column, feature] : map) {
      if (static_cast<uint32_t>(feature.column_index) >= width) return never;
      required = std::max(required, int64_t{feature.column_index} + 1);
    }
  }
  return static_cast<size_t>(required);
}
