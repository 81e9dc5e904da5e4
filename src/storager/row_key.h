#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "sqliteconfig/config_records.h"
#include "storager/bound_row.h"

// Puts the values of a row's unique fields down as bytes. Rows with the same bytes have the same
// key to SQLite.
class RowKey {
 public:
  // `table_number` keeps the keys of different tables apart.
  RowKey(const TableFields& fields, uint32_t table_number);

  // Takes a row: a value for each field, in order. False when a value of the key is NULL to SQLite,
  // which a real that is no number and a blob of no bytes become: then the row repeats no key.
  bool Make(const BoundValue* values);

  // Of the last row that has a key.
  std::span<const uint8_t> bytes() const { return {bytes_.data(), size_}; }

  // Whether other bytes would be another key to SQLite, too. A number is not exact that a column
  // of texts stores as a text, for one.
  bool is_exact() const { return is_exact_; }

  // The unique fields.
  const std::vector<uint32_t>& fields() const { return fields_; }

 private:
  uint8_t* PutBytes(uint8_t* at, const BoundValue& value);

  std::vector<uint32_t> fields_;
  std::vector<uint32_t> exact_kinds_;  // for each unique field, a bit for each kind
  size_t numbers_room_ = 0;            // bytes for all heads and numbers
  std::vector<uint8_t> bytes_;         // the table's number stays in front
  size_t first_ = 0;                   // behind it
  size_t size_ = 0;
  bool is_exact_ = false;
};
