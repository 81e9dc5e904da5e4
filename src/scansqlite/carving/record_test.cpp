#include "scansqlite/carving/record_test.h"

#include "scansqlite/carving/cell_head.h"
#include "scansqlite/carving/position_test.h"
#include "scansqlite/carving/value_check.h"

namespace {

// The head of a cell and one byte in front of it: three varints of nine bytes at most.
constexpr uint64_t kHeadReach = 40;

// The made-up cell of a row id alias is empty, but no NULL.
constexpr uint64_t kAliasType = ~uint64_t{0};

constexpr uint8_t kConstants[2] = {0, 1};

// Bytes in the body by serial type, for those below 12.
constexpr uint8_t kSmallLengths[12] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
constexpr int8_t kSmallClasses[12] = {kClassNull,      kClassInteger,   kClassInteger,
                                      kClassInteger,   kClassInteger,   kClassInteger,
                                      kClassInteger,   kClassReal,      kClassUndecided,
                                      kClassUndecided, kClassUndecided, kClassUndecided};

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

void Describe(uint64_t type, RecordValue& value) {
  value.serial_type = type;
  if (type < 12) {
    value.length = kSmallLengths[type];
    value.storage_class = kSmallClasses[type];
    return;
  }
  const bool is_blob = type % 2 == 0;
  value.storage_class = is_blob ? kClassBlob : kClassText;
  value.length = static_cast<uint32_t>((type - (is_blob ? 12U : 13U)) / 2);
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

// The cheap part: the serial types, whether they hold a value, whether the values can be
// as long as they say.
Verdict RecordTest::ReadHeader(const ByteView& view, uint64_t position) {
  const uint8_t* const begin = view.At(position);
  const uint8_t* const end = view.bytes + (view.end - view.begin);
  const uint8_t* at = begin;
  bool holds_value = false;
  uint64_t data_bytes = 0;
  count_ = plan_.first;
  for (size_t column = plan_.first; column < plan_.width; ++column) {
    if (at == end) {
      if (view.end != view.source_size) return Verdict::kOpen;
      break;
    }
    uint64_t type = *at;
    if (type < 0x80) {
      ++at;
    } else {
      type = ReadLongType(at, end);
      if (at == end && view.end != view.source_size) return Verdict::kOpen;
    }
    if (!plan_.sets[column].Has(type)) break;
    RecordValue& value = values_[column];
    Describe(type, value);
    if (value.length > kMaxValueBytes) return Verdict::kMiss;
    if (value.length >= static_cast<uint32_t>(view.source_size)) return Verdict::kMiss;
    // A constant is an integer here and of no class as a value.
    const bool is_value = value.storage_class >= 0 || type == 8 || type == 9;
    holds_value = holds_value || (is_value && plan_.is_primary_key[column] == 0);
    data_bytes += value.length;
    serial_bytes_ = static_cast<uint32_t>(at - begin);
    count_ = column + 1;
  }
  if (count_ < plan_.required || !holds_value) return Verdict::kMiss;
  if (data_bytes > plan_.layout->header->table_max_leaf) return Verdict::kOpen;
  data_bytes_ = static_cast<uint32_t>(data_bytes);
  serial_bytes_ += static_cast<uint32_t>(plan_.first);
  return Verdict::kHit;
}

Verdict RecordTest::PlaceValues(const ByteView& view, uint64_t position) {
  const uint64_t body = position + serial_bytes_ - plan_.first;
  if (!view.Holds(body, body + data_bytes_)) return Verdict::kOpen;
  const uint8_t* at = view.At(body);
  for (size_t column = plan_.first; column < count_; ++column) {
    RecordValue& value = values_[column];
    value.bytes = at;
    at += value.length;
    if (value.serial_type == 8 || value.serial_type == 9) {
      value.bytes = &kConstants[value.serial_type - 8];
      value.length = 1;
    }
  }
  return Verdict::kHit;
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
  if (PlaceValues(view, position) != Verdict::kHit) return Verdict::kOpen;
  bool is_open = false;
  for (const ValueCheck& check : plan_.checks) {
    const RecordValue& value = values_[check.column];
    switch (CheckValue(*check.feature, value)) {
      case Verdict::kMiss:
        if (!check.reads_after_cleaning || StaysAsItIs(value)) return Verdict::kMiss;
        is_open = true;
        break;
      case Verdict::kOpen:
        is_open = true;
        break;
      case Verdict::kHit:
        break;
    }
  }
  return is_open ? Verdict::kOpen : Verdict::kHit;
}

bool RecordTest::BuildRow(const ByteView& view, uint64_t position, std::vector<BoundValue>& row,
                          RowIdHint& hint) {
  CarvedRecord record;
  record.serial_bytes = serial_bytes_;
  record.data_bytes = data_bytes_;
  MeasureSizes(record);
  const auto in_page = static_cast<int32_t>(position % plan_.layout->header->page_size);
  FindCellHead(view, static_cast<int32_t>(static_cast<uint32_t>(position - 1 - plan_.first)), in_page,
               record);
  hint = {record.has_row_id, record.row_id};
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

bool RecordTest::BuildValue(const FieldSource& source, const RowIdHint& hint,
                            BoundValue& out) const {
  if (source.is_absent) return true;
  if (source.is_row_id) {
    out = BoundValue::Integer(hint.row_id);
    return true;
  }
  static constexpr uint8_t kNoBytes = 0;
  const auto column = static_cast<size_t>(source.column);
  const RecordValue* value = nullptr;
  if (source.column >= 0 && column < count_) value = &values_[column];
  const bool is_empty = value == nullptr || value->length == 0;
  if (value != nullptr && is_empty && value->storage_class != kClassText) return true;
  switch (source.field_type) {
    case kFieldInteger:
      out = BoundValue::Integer(is_empty ? 0 : NumberOf(value->bytes, value->length));
      return true;
    case kFieldReal:
      if (value == nullptr) return true;
      if (value->storage_class == kClassInteger) {
        out = BoundValue::Integer(NumberOf(value->bytes, value->length));
      } else if (value->storage_class == kClassReal) {
        out = BoundValue::Real(RealOf(value->bytes, value->length));
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
