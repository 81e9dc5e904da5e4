#include "byte_set_check.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <vector>

#include "sqliteconfig/byte_set.h"

namespace vexaconfigc {

namespace {

// Items between commas; a comma in quotes belongs to its item.
std::vector<std::string> SplitItems(const std::string& text) {
  std::vector<std::string> items(1);
  bool quoted = false;
  for (const char c : text) {
    if (c == '\'') quoted = !quoted;
    if (c == ',' && !quoted) {
      items.emplace_back();
    } else {
      items.back() += c;
    }
  }
  return items;
}

bool IsHexByte(const std::string& item) {
  return item.size() == 4 && item[0] == '0' && (item[1] == 'x' || item[1] == 'X') &&
         std::isxdigit(static_cast<unsigned char>(item[2])) != 0 &&
         std::isxdigit(static_cast<unsigned char>(item[3])) != 0;
}

// The byte that "a" or "'a'" stands for; nothing for any other text.
std::optional<uint8_t> SingleByte(const std::string& item) {
  if (item.size() == 3 && item.front() == '\'' && item.back() == '\'' && item[1] != '\'') {
    return static_cast<uint8_t>(item[1]);
  }
  if (item.size() == 1 && item[0] != '0' && item[0] != '\'' && item[0] != '~') {
    return static_cast<uint8_t>(item[0]);
  }
  return std::nullopt;
}

// Where the tilde of a range stands, looking past one in quotes ('~'~'~').
size_t RangeTilde(const std::string& item) {
  bool quoted = false;
  for (size_t i = 0; i < item.size(); ++i) {
    if (item[i] == '\'') quoted = !quoted;
    if (item[i] == '~' && !quoted) return i;
  }
  return std::string::npos;
}

// The library counts through a range in eight bits and would never pass the last value.
bool EndsAtHighestByte(const std::string& to) {
  return to == "0xFF" || to == "0xff" || to == "0XFF" || to == "\xFF" || to == "'\xFF'";
}

std::string RangeFault(const std::string& item, size_t tilde, ByteSet& meant) {
  const std::string from = item.substr(0, tilde);
  const std::string to = item.substr(tilde + 1);
  if (EndsAtHighestByte(to)) return "a range that ends at the byte 0xFF would never end";
  if (from.rfind("0x", 0) == 0 || from.rfind("0X", 0) == 0 || to.rfind("0x", 0) == 0 ||
      to.rfind("0X", 0) == 0) {
    return "a range cannot be written in hexadecimal: '" + item + "' begins at the byte before it";
  }
  if (from == "0" || to == "0") {
    return "a bare 0 begins a hexadecimal byte and no range: write '0' in quotes instead of " +
           item;
  }
  const std::optional<uint8_t> first = SingleByte(from);
  const std::optional<uint8_t> last = SingleByte(to);
  if (!first || !last) return "the range " + item + " does not go from one byte to one byte";
  if (*first > *last) return "the range " + item + " is empty, since it ends before it begins";
  for (unsigned byte = *first; byte <= *last; ++byte) meant.Add(static_cast<uint8_t>(byte));
  return "";
}

std::string ItemFault(const std::string& item, ByteSet& meant) {
  if (item.empty()) {
    return "an empty item between commas repeats the byte before it; the comma is ','";
  }
  if (const size_t tilde = RangeTilde(item); tilde != std::string::npos) {
    return RangeFault(item, tilde, meant);
  }
  if (IsHexByte(item)) {
    uint8_t byte = 0;
    std::from_chars(item.data() + 2, item.data() + item.size(), byte, 16);
    meant.Add(byte);
    return "";
  }
  if (item == "0") return "a bare 0 is the byte of value 0: write '0' in quotes, or 0x00";
  if (item[0] == '0') return "the hexadecimal byte " + item + " needs the form 0x41";
  if (const std::optional<uint8_t> byte = SingleByte(item)) {
    meant.Add(*byte);
    return "";
  }
  if (item.find('\'') != std::string::npos && item.find_first_not_of('\'') == std::string::npos) {
    return "a quote is no member of a set by itself: write 0x27";
  }
  return "of the item " + item + " only the last byte would count";
}

bool SameSet(const ByteSet& a, const ByteSet& b) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    if (a.Contains(static_cast<uint8_t>(byte)) != b.Contains(static_cast<uint8_t>(byte))) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::string ByteSetFault(const std::string& text) {
  if (std::count(text.begin(), text.end(), '\'') % 2 != 0) return "a quote is not closed";
  ByteSet meant;
  for (const std::string& item : SplitItems(text)) {
    if (std::string fault = ItemFault(item, meant); !fault.empty()) return fault;
  }
  const auto is_high = [](char c) { return (static_cast<unsigned char>(c) & 0x80U) != 0; };
  if (std::any_of(text.begin(), text.end(), is_high)) {
    return "only ASCII stands in a byte set: of any other character the last byte alone counts";
  }
  // The last word is the library's own: its reader carries state from item to item.
  if (!SameSet(meant, ParseByteSet(text))) return "the text reads as another set than it says";
  return "";
}

}  // namespace vexaconfigc
