#pragma once

#include <string>
#include <string_view>

// Converts UTF-8 to UTF-16 in machine order. Throws std::range_error("bad conversion") on a
// sequence that is no UTF-8: an overlong form, an encoded surrogate, a cut sequence.
std::u16string Utf8ToWide(std::string_view text);

// Converts UTF-16 in machine order to UTF-8. Throws std::range_error("bad conversion") on an
// unpaired surrogate: a lone high, a lone low, or a high at the end.
std::string WideToUtf8(std::u16string_view text);
