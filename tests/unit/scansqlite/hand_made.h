#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/sqlitecommon/file_data_buf.h"
#include "common/sqlitecommon/raw_value.h"
#include "scansqlite/carving/serial_type.h"
#include "scansqlite/init/db_header.h"
#include "scansqlite/schema/table_schema.h"
#include "support/temp_folder.h"

// Pages, cells and values put together by hand.
namespace hand_made {

using Bytes = std::vector<uint8_t>;

inline void Put(Bytes& bytes, size_t at, const Bytes& what) {
  std::copy(what.begin(), what.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

inline Bytes U16(uint32_t value) {
  return {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

inline Bytes U32(uint32_t value) {
  return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
          static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

inline Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

inline Bytes Text(const std::string& text) { return {text.begin(), text.end()}; }

// `count` bytes that tell their place.
inline Bytes Pattern(size_t count, uint8_t first = 1) {
  Bytes bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(first + i);
  return bytes;
}

// A varint of at most 8 bytes, as SQLite writes it.
inline Bytes Varint(uint64_t value) {
  Bytes bytes{static_cast<uint8_t>(value & 0x7FU)};
  while ((value >>= 7) != 0) {
    bytes.insert(bytes.begin(), static_cast<uint8_t>(0x80U | (value & 0x7FU)));
  }
  return bytes;
}

inline void WriteFile(const std::string& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

// A file with these bytes, opened for the carvers.
class FileOf {
 public:
  explicit FileOf(const Bytes& bytes) {
    WriteFile(folder_.File("file"), bytes);
    buf_ = std::make_unique<FileDataBuf>(folder_.File("file"));
  }
  FileDataBuf& buf() { return *buf_; }

 private:
  TempFolder folder_;
  std::unique_ptr<FileDataBuf> buf_;
};

inline DbHeaderInfo Header(uint16_t page_size, uint32_t page_count, uint16_t reserved_size = 0) {
  DbHeaderInfo info;
  info.page_size = page_size;
  info.reserved_size = reserved_size;
  info.page_count = page_count;
  const int64_t usable = int64_t{page_size} - reserved_size;
  info.table_max_leaf = static_cast<uint16_t>(usable - 35);
  info.table_min_local = static_cast<uint16_t>((usable - 12) * 32 / 255 - 23);
  info.index_min_local = info.table_min_local;
  info.index_max_local = static_cast<uint16_t>((usable - 12) * 64 / 255 - 23);
  info.text_encoding = 1;
  return info;
}

inline RawValue Raw(const Bytes& bytes, int32_t storage_class) {
  RawValue value;
  value.length = static_cast<int32_t>(bytes.size());
  value.storage_class = storage_class;
  if (!bytes.empty()) {
    value.bytes = std::make_unique<uint8_t[]>(bytes.size());
    std::memcpy(value.bytes.get(), bytes.data(), bytes.size());
  }
  return value;
}

inline std::vector<RawValue> OneRaw(const Bytes& bytes, int32_t storage_class) {
  std::vector<RawValue> values;
  values.push_back(Raw(bytes, storage_class));
  return values;
}

inline Bytes BytesOf(const RawValue& value) {
  if (value.bytes == nullptr) return {};
  return {value.bytes.get(), value.bytes.get() + value.length};
}

inline SerialTypeCell Cell(uint64_t serial_type) {
  SerialTypeCell cell;
  cell.header_bytes = static_cast<uint32_t>(Varint(serial_type).size());
  cell.serial_type = serial_type;
  DecodeSerialType(cell);
  return cell;
}

inline SerialTypeCells Cells(const std::vector<uint64_t>& serial_types) {
  SerialTypeCells cells;
  for (const uint64_t type : serial_types) cells.push_back(Cell(type));
  return cells;
}

inline uint64_t BlobType(size_t length) { return 12 + 2 * uint64_t{length}; }
inline uint64_t TextType(size_t length) { return 13 + 2 * uint64_t{length}; }

inline SqlColumnInfo Column(const std::string& name, int32_t type_code, bool is_primary = false) {
  SqlColumnInfo column;
  column.name = name;
  column.type_code = type_code;
  column.is_primary_key = is_primary;
  return column;
}

inline FieldFeature Feature(int32_t column, int32_t type, int32_t candidate, int64_t min,
                            int64_t max, int32_t is_not_null = 0) {
  FieldFeature feature;
  feature.column_index = column;
  feature.field_type = type;
  feature.field_type_candidate = candidate;
  feature.is_not_null = is_not_null;
  feature.value_ranges.push_back({min, max});
  return feature;
}

inline FeatureMap FeaturesOf(const std::vector<FieldFeature>& features) {
  FeatureMap map;
  for (const FieldFeature& feature : features) map.emplace(feature.column_index, feature);
  return map;
}

inline ResultFieldInfo ResultField(const std::string& name, int32_t type, int32_t column,
                                   int32_t is_row_id = 0) {
  ResultFieldInfo field;
  field.field_name = name;
  field.field_type = type;
  field.column_index = column;
  field.is_row_id_field = is_row_id;
  return field;
}

inline ResultFieldMap ResultFields(const std::vector<ResultFieldInfo>& fields) {
  ResultFieldMap map;
  for (const ResultFieldInfo& field : fields) map.Insert(field.field_name, field);
  return map;
}

// One value of a record as it stands on disk.
struct DiskValue {
  uint64_t serial_type = 0;
  Bytes bytes;
};

inline DiskValue TextValue(const std::string& text) { return {TextType(text.size()), Text(text)}; }
inline DiskValue Int16Value(uint32_t number) { return {2, U16(number)}; }
inline DiskValue NullValue() { return {0, {}}; }

// Header and body of a record whose header stays below 128 bytes.
inline Bytes Record(const std::vector<DiskValue>& values) {
  Bytes types;
  Bytes body;
  for (const DiskValue& value : values) {
    types = Join({types, Varint(value.serial_type)});
    body = Join({body, value.bytes});
  }
  return Join({Varint(types.size() + 1), types, body});
}

// A table leaf cell without overflow.
inline Bytes LeafCell(uint64_t row_id, const std::vector<DiskValue>& values) {
  const Bytes record = Record(values);
  return Join({Varint(record.size()), Varint(row_id), record});
}

}  // namespace hand_made
