// Message texts in the scripts that people write, each one different by its number.
#pragma once

#include <cstddef>
#include <string>

namespace vexascan {

// One or two sentences; `variant` chooses them.
std::string ShortText(int number, int variant);

// Sentences in all scripts, at least `bytes` long.
std::string LongText(int number, std::size_t bytes);

// The first `columns` characters of a text for the terminal, with "..." when more follow.
std::string Excerpt(const std::string& text, std::size_t columns);

}  // namespace vexascan
