#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// The declared types that the library knows, in the two spellings in which applications write
// them. The row is the type code, but for the rows 14 and 16, which mean integer. Rows without a
// word keep the numbering. "INTERGER" and "ntextint" are spellings found in real databases.
inline constexpr int32_t kTypeRowInterger = 14;
inline constexpr int32_t kTypeRowInt = 16;

// A row without a word is never met: words of a clause are not empty.
inline constexpr std::array<std::string_view, 19> kUpperTypeWords = {
    "INTEGER",  "FLOAT", "DOUBLE", "TEXT",     "BLOB",     "VARCHAR", "TIMESTAMP",
    "STRING",   "REAL",  "BOOL",   "UNSIGNED", "DATETIME", "BOOLEAN", "LONG",
    "INTERGER", "NTEXT", "INT",    "",         ""};

inline constexpr std::array<std::string_view, 19> kLowerTypeWords = {
    "integer",  "float",    "double", "text",     "blob",     "varchar", "timestamp",
    "string",   "real",     "bool",   "unsigned", "datetime", "boolean", "long",
    "interger", "ntextint", "",       "",         ""};
