#pragma once

#include <string>
#include <vector>

// Appends the items between the delimiters to `out`, in order; empty items are dropped.
void SplitText(const std::string& text, char delimiter, std::vector<std::string>& out);

// The text with every occurrence of `old_text` replaced, from left to right and without reading
// replaced text again. Unchanged when `text` or `old_text` is empty or both texts are equal.
std::string ReplaceText(std::string text, const std::string& old_text, const std::string& new_text);
