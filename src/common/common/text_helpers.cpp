#include "common/common/text_helpers.h"

void SplitText(const std::string& text, char delimiter, std::vector<std::string>& out) {
  size_t begin = 0;
  while (begin < text.size()) {
    size_t end = text.find(delimiter, begin);
    if (end == std::string::npos) end = text.size();
    if (end > begin) out.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
}

std::string ReplaceText(std::string text, const std::string& old_text,
                        const std::string& new_text) {
  if (text.empty() || old_text.empty() || old_text == new_text) return text;
  std::string replaced;
  size_t from = 0;
  size_t at = 0;
  while ((at = text.find(old_text, from)) != std::string::npos) {
    replaced.append(text, from, at - from);
    replaced += new_text;
    from = at + old_text.size();
  }
  replaced.append(text, from);
  return replaced;
}
