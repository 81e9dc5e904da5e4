#include "scansqlite/carving/record_test.h"

#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/value_check.h"

namespace {

// The head of a cell and one byte in front of it: three varints of nine bytes at most.
constexpr uint64_t kHeadReach = 40;

// The made-up cell of a row id alias is empty, but no NULL.
constexpr uint64_t kAliasType = ~uint64_t{0};

constexpr uint8_t kConstants[2] = {0, 1};

// A serial type of more than one byte; `at` stands on its first byte and moves behind it.
uint64_t ReadLongType(const uint8_t*& at, const uint8_t* end) {
  uint64_t value = 0;
  for (int count = 0; at < end && count < 9; ++count) {
    const uint8_t byte = *at++;
    value = (value << 7) + (byte & 0x7FU);
    if ((byte & 0x80U) == 0) break;
  }
  return value;
}

uint32_t LengthOf(uint64_t type) {
  SerialTypeCell cell;
  cell.serial_type = type;
  DecodeSerialType(cell);
  return cell.payload_length;
}

// Of a value: the constants have none.
int32_t ClassOfValue(uint64_t type) {
  if (type >= 12) return type % 2 == 0 ? kClassBlob : kClassText;
  if (type >= 8) return kClassUndecided;
  if (type == 7) return kClassReal;
  return type == 0 ? kClassNull : kClassInteger;
}

// Neither NULL nor reserved.
bool IsValue(uint64_t type) { return type != 0 && type != 10 && type != 11; }

// No value is as long as the source, whose size counts in 32 bits.
bool CanBeAsLong(const RecordValue& value, const ByteView& view) {
  return value.length <= kMaxValueBytes && value.length < static_cast<uint32_t>(view.source_size);
}

// Whether reading the value as a text changes none of its bytes.
bool StaysAsItIs(const RecordValue& value) {
  return value.length == 0 || IsConstant(value) || IsCleanText(value.bytes, value.length);
}

}  // namespace

RecordTest::RecordTest(const RecordPlan& plan) : plan_(plan), values_(plan.width) {
  if (plan.first == 0 || plan.width == 0) return;
  values_[0].serial_type = kAliasType;
  values_[0].storage_class = kClassNull;
}

// The cell whose serial type takes more than one byte, `at` its first one, which moves behind it.
// False when the record ends in front of it.
bool RecordTest::ReadLongCell(const ByteView& view, const uint8_t*& at, size_t column) {
  const uint8_t* const end = view.bytes + (view.end - view.begin);
  RecordValue& value = values_[column];
  const uint8_t* next = at;
  value.serial_type = ReadLongType(next, end);
  value.length = LengthOf(value.serial_type);
  reaches_end_ = reaches_end_ || (next == end && view.end != view.source_size);
  if (!plan_.sets[column].Has(value.serial_type)) return false;
  at = next;
  is_too_long_ = is_too_long_ || !CanBeAsLong(value, view);
  holds_value_ = holds_value_ || (IsValue(value.serial_type) && plan_.is_primary_key[column] == 0);
  return true;
}

// The cheap part: the serial types, whether they hold a value, whether the values can be as long as
// they say.
Verdict RecordTest::ReadHeader(const ByteView& view, uint64_t position) {
  const uint8_t* const begin = view.At(position);
  const uint8_t* const end = view.bytes + (view.end - view.begin);
  const uint8_t* at = begin;
  uint32_t flags = 0;
  uint64_t body_bytes = 0;
  reaches_end_ = is_too_long_ = holds_value_ = false;
  const size_t width = plan_.width;
  const RecordPlan::ShortCells* const cells = plan_.short_cells.data();
  RecordValue* const values = values_.data();
  size_t column = plan_.first;
  for (; column < width && at != end; ++column) {
    RecordValue& value = values[column];
    const uint8_t byte = *at;
    if (byte < 0x80) {
      const uint8_t cell = cells[column][byte];
      if ((cell & RecordPlan::kRefused) != 0) break;
      ++at;
      flags |= cell;
      value.serial_type = byte;
      value.length = cell & RecordPlan::kLengthBits;
    } else if (!ReadLongCell(view, at, column)) {
      break;
    }
    value.place = static_cast<uint32_t>(body_bytes);
    body_bytes += value.length;
  }
  reaches_end_ = reaches_end_ || (at == end && column < width && view.end != view.source_size);
  count_ = column;
  if (reaches_end_) return Verdict::kOpen;
  if (count_ < plan_.required) return Verdict::kMiss;
  if ((flags & RecordPlan::kHoldsValue) == 0 && !holds_value_) return Verdict::kMiss;
  // In the smallest sources even short values have to be looked at one by one.
  if (is_too_long_) return Verdict::kMiss;
  if (view.has_tiny_limit || body_bytes > plan_.layout->header->table_max_leaf) {
    return Verdict::kOpen;
  }
  data_bytes_ = static_cast<uint32_t>(body_bytes);
  serial_bytes_ = static_cast<uint32_t>(static_cast<uint64_t>(at - begin) + plan_.first);
  return Verdict::kHit;
}

// Most records that fail do so at the first value that is looked at: values get their bytes when
// they are asked for.
void RecordTest::Place(RecordValue& value) const {
  if (value.serial_type == kAliasType) return;
  value.storage_class = ClassOfValue(value.serial_type);
  if (IsConstant(value)) {
    value.bytes = &kConstants[value.serial_type - 8];
    value.length = 1;
  } else {
    value.bytes = body_ + value.place;
  }
}

Verdict RecordTest::CheckValues() {
  bool is_open = false;
  for (const ValueCheck& check : plan_.checks) {
    RecordValue& value = values_[check.column];
    Place(value);
    const Verdict verdict = CheckValue(check, value);
    if (verdict == Verdict::kHit) continue;
    // A text check of the same column may have changed the bytes by then.
    const bool decides = !check.reads_after_cleaning || StaysAsItIs(value);
    if (verdict == Verdict::kMiss && decides) return Verdict::kMiss;
    is_open = true;
  }
  return is_open ? Verdict::kOpen : Verdict::kHit;
}

Verdict RecordTest::Test(const ByteView& view, uint64_t position) {
  if (!view.Holds(position, position)) return Verdict::kOpen;
  if (view.begin != 0 && position < view.begin + kHeadReach) return Verdict::kOpen;
  if (const Verdict verdict = ReadHeader(view, position); verdict != Verdict::kHit) return verdict;
  if (!plan_.is_fast) return Verdict::kOpen;
  CarvedRecord record;
  record.serial_bytes = serial_bytes_;
  record.data_bytes = data_bytes_;
  MeasureSizes(record);
  if (record.payload_size > plan_.layout->header->table_max_leaf) return Verdict::kOpen;
  const uint64_t body = position + serial_bytes_ - plan_.first;
  if (!view.Holds(body, body + data_bytes_)) return Verdict::kOpen;
  body_ = view.At(body);
  return CheckValues();
}

RowIdHint RecordTest::FindRowId(const ByteView& view, uint64_t position) const {
  CarvedRecord record;
  record.serial_bytes = serial_bytes_;
  record.data_bytes = data_bytes_;
  const uint64_t head_end = position - 1 - plan_.first;
  const auto in_page = static_cast<int32_t>(position % plan_.layout->header->page_size);
  if (in_page >= kUsualHeadRoom && view.Holds(position - kUsualHeadRoom, position)) {
    FindUsualCellHead(view.At(head_end), record);
  } else {
    FindCellHead(view, static_cast<int32_t>(static_cast<uint32_t>(head_end)), in_page, record);
  }
  return {record.has_row_id, record.row_id};
}

bool RecordTest::BuildRow(const ByteView& view, uint64_t position, std::vector<BoundValue>& row,
                          RowIdHint& hint) {
  hint = FindRowId(view, position);
  const size_t before = row.size();
  for (const FieldSource& source : plan_.fields) {
    row.emplace_back();
    if (!BuildValue(source, hint, row.back())) {
      row.resize(before);
      return false;
    }
  }
  return true;
}

bool RecordTest::BuildValue(const FieldSource& source, const RowIdHint& hint, BoundValue& out) {
  if (source.is_absent) return true;
  if (source.is_row_id) {
    out = BoundValue::Integer(hint.row_id);
    return true;
  }
  static constexpr uint8_t kNoBytes = 0;
  const auto column = static_cast<size_t>(source.column);
  RecordValue* value = nullptr;
  if (source.column >= 0 && column < count_) {
    value = &values_[column];
    Place(*value);
  }
  const bool is_empty = value == nullptr || value->length == 0;
  if (value != nullptr && is_empty && value->storage_class != kClassText) return true;
  switch (source.field_type) {
    case kFieldInteger:
      out = BoundValue::Integer(is_empty ? 0 : BytesAsInteger(value->bytes, value->length));
      return true;
    case kFieldReal:
      if (value == nullptr) return true;
      if (value->storage_class == kClassInteger) {
        out = BoundValue::Integer(BytesAsInteger(value->bytes, value->length));
      } else if (value->storage_class == kClassReal) {
        out = BoundValue::Real(BytesAsReal(value->bytes, value->length));
      }
      return true;
    case kFieldText:
      if (value != nullptr && value->storage_class == kClassBlob) {
        out = BoundValue::Blob(value->bytes, value->length);
        return true;
      }
      if (is_empty || IsConstant(*value)) {
        out = BoundValue::Text(&kNoBytes, 0);
        return true;
      }
      out = BoundValue::Text(value->bytes, value->length);
      return IsCleanText(value->bytes, value->length);
    default:
      out = BoundValue::Blob(is_empty ? &kNoBytes : value->bytes, is_empty ? 0 : value->length);
      return true;
  }
}
