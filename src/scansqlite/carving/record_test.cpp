#include "scansqlite/carving/record_test.h"

#include <bit>
#include <cstring>

#include "common/sqlitecommon/clean_text.h"
#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/value_check.h"

namespace {

constexpr uint8_t kConstants[2] = {0, 1};

// Of a value: the constants have none.
int32_t ClassOfValue(uint64_t type) {
  if (type == HeaderCells::kAliasType) return kClassNull;
  if (type >= 12) return type % 2 == 0 ? kClassBlob : kClassText;
  if (type >= 8) return kClassUndecided;
  if (type == 7) return kClassReal;
  return type == 0 ? kClassNull : kClassInteger;
}

// Neither NULL nor reserved.
bool IsValue(uint64_t type) { return type != 0 && type != 10 && type != 11; }

// Bytes in front of a value that may be loaded with it.
constexpr uint64_t kNumberReach = 8;

// The number of serial type 1 to 6, of `length` bytes, loaded with what stands in front of it.
int64_t LoadNumber(const uint8_t* bytes, uint32_t length) {
  uint64_t loaded = 0;
  std::memcpy(&loaded, bytes + length - sizeof loaded, sizeof loaded);
  if constexpr (std::endian::native == std::endian::little) loaded = __builtin_bswap64(loaded);
  const uint32_t others = 64 - 8 * length;
  return static_cast<int64_t>(loaded << others) >> others;
}

bool IsNumber(uint64_t type) { return type - 1 < 6; }
bool IsConstantType(uint64_t type) { return type - 8 < 2; }
bool IsText(uint64_t type) { return type % 2 != 0 && type >= 13; }

// Whether reading the value as a text changes none of its bytes.
bool StaysAsItIs(const RecordValue& value) {
  return value.length == 0 || IsConstant(value) || IsCleanText(value.bytes, value.length);
}

}  // namespace

RecordTest::RecordTest(const RecordPlan& plan) : plan_(plan), own_header_(plan) {}

bool RecordTest::HoldsValue() const {
  for (size_t column = plan_.first; column < count_; ++column) {
    if (IsValue(header_->type(column)) && plan_.is_primary_key[column] == 0) return true;
  }
  return false;
}

// The cheap part: the serial types, whether they hold a value, whether the values can be as long as
// they say.
Verdict RecordTest::TestHeader(const ByteView& view) {
  if (header_->ReachesEnd(plan_.width)) return Verdict::kOpen;
  count_ = header_->CountOf(plan_.width);
  if (count_ < plan_.required || !HoldsValue()) return Verdict::kMiss;
  // In the smallest sources even short values have to be looked at one by one.
  if (header_->IsTooLong(count_)) return Verdict::kMiss;
  const uint64_t body_bytes = header_->BodyBytes(count_);
  if (view.has_tiny_limit || body_bytes > plan_.layout->header->table_max_leaf) {
    return Verdict::kOpen;
  }
  data_bytes_ = static_cast<uint32_t>(body_bytes);
  serial_bytes_ = static_cast<uint32_t>(header_->SerialBytes(count_));
  return Verdict::kHit;
}

RecordValue RecordTest::ValueAt(size_t column) const {
  const uint64_t type = header_->type(column);
  if (type == HeaderCells::kAliasType) return {type, nullptr, 0};
  if (IsConstantType(type)) return {type, &kConstants[type - 8], 1};
  return {type, body_ + header_->place(column), header_->length(column)};
}

// Most checks are of numbers, and pass.
bool RecordTest::PassesAsNumber(const ValueCheck& check) const {
  const uint64_t type = header_->type(check.column);
  if (type == 0) return check.admits_null;
  int64_t number = 0;
  if (IsNumber(type)) {
    const uint64_t place = header_->place(check.column);
    number = LoadNumber(body_ + place, header_->length(check.column));
  } else if (IsConstantType(type)) {
    number = static_cast<int64_t>(type - 8);
  } else {
    return false;
  }
  return check.lowest <= number && number <= check.highest;
}

Verdict RecordTest::CheckValues() const {
  bool is_open = false;
  for (const ValueCheck& check : plan_.checks) {
    if (check.takes_number && PassesAsNumber(check)) continue;
    const RecordValue value = ValueAt(check.column);
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
  if (!own_header_.Read(view, position)) return Verdict::kOpen;
  return TestBehind(own_header_, view, position);
}

Verdict RecordTest::TestBehind(const HeaderCells& header, const ByteView& view, uint64_t position) {
  header_ = &header;
  if (position < kNumberReach) return Verdict::kOpen;
  if (const Verdict verdict = TestHeader(view); verdict != Verdict::kHit) return verdict;
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

bool RecordTest::BuildRow(const RowIdHint& hint, std::vector<BoundValue>& row) const {
  const size_t before = row.size();
  row.resize(before + plan_.fields.size());
  BoundValue* out = row.data() + before;
  for (const FieldSource& source : plan_.fields) {
    if (!BuildUsualValue(source, *out) && !BuildValue(source, hint, *out)) {
      row.resize(before);
      return false;
    }
    ++out;
  }
  return true;
}

bool RecordTest::BuildFields(const std::vector<uint32_t>& fields, BoundValue* row) const {
  for (const uint32_t field : fields) {
    row[field] = BoundValue::Null();
    if (!BuildUsualValue(plan_.fields[field], row[field])) return false;
  }
  return true;
}

// A value of the kind that its column is for. False leaves it to BuildValue.
bool RecordTest::BuildUsualValue(const FieldSource& source, BoundValue& out) const {
  const auto column = static_cast<size_t>(source.column);
  if (!source.is_usual || column >= count_) return false;
  const uint64_t type = header_->type(column);
  if (type == 0) return true;  // NULL
  const uint8_t* const bytes = body_ + header_->place(column);
  const uint32_t length = header_->length(column);
  if (source.field_type == kFieldInteger) {
    if (IsNumber(type)) {
      out = BoundValue::Integer(LoadNumber(bytes, length));
    } else if (IsConstantType(type)) {
      out = BoundValue::Integer(static_cast<int64_t>(type - 8));
    } else {
      return false;
    }
    return true;
  }
  if (!IsText(type) || type == HeaderCells::kAliasType || !IsCleanText(bytes, length)) return false;
  out = BoundValue::Text(bytes, length);
  return true;
}

bool RecordTest::BuildValue(const FieldSource& source, const RowIdHint& hint,
                            BoundValue& out) const {
  if (source.is_absent) return true;
  if (source.is_row_id) {
    out = BoundValue::Integer(hint.row_id);
    return true;
  }
  static constexpr uint8_t kNoBytes = 0;
  const auto column = static_cast<size_t>(source.column);
  const bool has_value = source.column >= 0 && column < count_;
  const RecordValue value = has_value ? ValueAt(column) : RecordValue{};
  const int32_t storage_class = has_value ? ClassOfValue(value.serial_type) : kClassText;
  const bool is_empty = value.length == 0;
  if (is_empty && storage_class != kClassText) return true;
  switch (source.field_type) {
    case kFieldInteger:
      out = BoundValue::Integer(is_empty ? 0 : BytesAsInteger(value.bytes, value.length));
      return true;
    case kFieldReal:
      if (storage_class == kClassInteger) {
        out = BoundValue::Integer(BytesAsInteger(value.bytes, value.length));
      } else if (storage_class == kClassReal) {
        out = BoundValue::Real(BytesAsReal(value.bytes, value.length));
      }
      return true;
    case kFieldText:
      if (storage_class == kClassBlob) {
        out = BoundValue::Blob(value.bytes, value.length);
        return true;
      }
      if (is_empty || IsConstant(value)) {
        out = BoundValue::Text(&kNoBytes, 0);
        return true;
      }
      out = BoundValue::Text(value.bytes, value.length);
      return IsCleanText(value.bytes, value.length);
    default:
      out = BoundValue::Blob(is_empty ? &kNoBytes : value.bytes, is_empty ? 0 : value.length);
      return true;
  }
}
