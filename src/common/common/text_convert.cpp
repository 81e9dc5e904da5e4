#include "common/common/text_convert.h"

#include <utf8.h>

#include <iterator>
#include <stdexcept>

std::u16string Utf8ToWide(std::string_view text) {
  std::u16string wide;
  try {
    utf8::utf8to16(text.begin(), text.end(), std::back_inserter(wide));
  } catch (const utf8::exception&) {
    throw std::range_error("bad conversion");
  }
  return wide;
}

std::string WideToUtf8(std::u16string_view text) {
  std::string narrow;
  try {
    utf8::utf16to8(text.begin(), text.end(), std::back_inserter(narrow));
  } catch (const utf8::exception&) {
    throw std::range_error("bad conversion");
  }
  return narrow;
}
