#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace recovery {

struct Blob {
  std::string bytes;

  bool operator==(const Blob&) const = default;
};

// One value as SQLite stores it. Texts are UTF-8; monostate is NULL.
using Value = std::variant<std::monostate, int64_t, double, std::string, Blob>;

using Row = std::vector<Value>;

inline bool IsNull(const Value& value) { return std::holds_alternative<std::monostate>(value); }

// The value for people: texts in quotes, blobs in hex, both cut when they are long.
std::string Shown(const Value& value, size_t most_bytes = 60);

}  // namespace recovery
