#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "sqliteconfig/config_records.h"

// One row on its way to the result database: values by column name, one map for each kind. A
// column whose value is NULL stands in none of them.
struct RowValue {
  std::unordered_map<std::string, std::string> text_values;
  std::unordered_map<std::string, int64_t> integer_values;
  std::unordered_map<std::string, double> real_values;
  std::unordered_map<std::string, std::vector<uint8_t>> blob_values;
};

// The field type code of the map that holds the column, asked in the order text, integer, real,
// blob; kFieldNone when none does.
int32_t ValueKindOf(const RowValue& row, const std::string& column_name);

// A copy of the text, or the empty text.
std::string GetTextValue(const RowValue& row, const std::string& column_name);

// A copy of the bytes, or none.
std::vector<uint8_t> GetBlobValue(const RowValue& row, const std::string& column_name);

// Sets the column in the integer map, replacing a value that stands there.
void SetIntegerValue(RowValue& row, const std::string& column_name, int64_t value);
