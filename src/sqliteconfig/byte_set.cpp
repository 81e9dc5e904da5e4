#include "sqliteconfig/byte_set.h"

#include <cctype>

namespace {

uint8_t HexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<uint8_t>(digit - '0');
  return static_cast<uint8_t>((digit | 0x20) - 'a' + 10);
}

// "x41" after the leading 0. Only the last two digits count; a malformed item is the byte 0.
uint8_t HexItemValue(const std::string& digits) {
  if (digits.size() < 2 || (digits[0] != 'x' && digits[0] != 'X')) return 0;
  uint8_t value = 0;
  for (size_t i = 1; i < digits.size(); ++i) {
    const char digit = digits[i];
    if (std::isxdigit(static_cast<unsigned char>(digit)) == 0) return 0;
    value = static_cast<uint8_t>((value << 4) + HexDigitValue(digit));
  }
  return value;
}

// `current_` and `range_end_` outlive an item: one that sets neither sees those of the item before.
class ByteSetReader {
 public:
  void Take(char c) {
    if (c == '\'') {
      quoted_ = !quoted_;
    } else if (c == '0' && !quoted_ && !hexadecimal_) {
      hexadecimal_ = true;
    } else if (c == ',' && !quoted_) {
      CloseItem();
      in_range_ = false;
      hexadecimal_ = false;
    } else if (c == '~' && !quoted_) {
      in_range_ = true;
    } else if (in_range_) {
      range_end_ = static_cast<uint8_t>(c);
    } else if (hexadecimal_) {
      digits_ += c;
    } else {
      current_ = static_cast<uint8_t>(c);
    }
  }

  void CloseItem() {
    if (in_range_) {
      for (unsigned byte = current_; byte <= range_end_; ++byte) {
        set_.Add(static_cast<uint8_t>(byte));
      }
    } else if (hexadecimal_) {
      set_.Add(HexItemValue(digits_));
      digits_.clear();
    } else {
      set_.Add(current_);
    }
  }

  const ByteSet& set() const { return set_; }

 private:
  bool quoted_ = false;
  bool in_range_ = false;
  bool hexadecimal_ = false;
  uint8_t current_ = 0;
  uint8_t range_end_ = 0;
  std::string digits_;
  ByteSet set_;
};

}  // namespace

ByteSet ParseByteSet(const std::string& text) {
  if (text.empty()) return {};
  ByteSetReader reader;
  for (const char c : text) reader.Take(c);
  reader.CloseItem();
  return reader.set();
}
