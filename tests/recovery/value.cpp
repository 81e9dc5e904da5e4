#include "recovery/value.h"

#include <array>
#include <cstdio>

namespace recovery {
namespace {

std::string Hex(const std::string& bytes, size_t most) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < bytes.size() && i < most; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
  }
  return text;
}

std::string CutMark(size_t size, size_t most) {
  return size > most ? "..(" + std::to_string(size) + " bytes)" : "";
}

struct Shower {
  size_t most;

  std::string operator()(std::monostate) const { return "NULL"; }
  std::string operator()(int64_t number) const { return std::to_string(number); }
  std::string operator()(double number) const {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.17g", number);
    return std::string(text.data()) + "r";
  }
  std::string operator()(const std::string& text) const {
    return "'" + text.substr(0, most) + "'" + CutMark(text.size(), most);
  }
  std::string operator()(const Blob& blob) const {
    return "x'" + Hex(blob.bytes, most / 2) + "'" + CutMark(blob.bytes.size(), most / 2);
  }
};

}  // namespace

std::string Shown(const Value& value, size_t most_bytes) {
  return std::visit(Shower{most_bytes}, value);
}

}  // namespace recovery
