#include "result_codes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vexascan {
namespace {

struct CodeWords {
  int code;
  std::string_view words;
};

constexpr std::array kCodeWords{
    CodeWords{0, "the scan ran to its end"},
    CodeWords{1, "the library was started without a log folder or a configuration folder"},
    CodeWords{5, "the scan parameters are not valid JSON"},
    CodeWords{1000, "the scan parameters are incomplete or out of range"},
    CodeWords{1003,
              "the scan could not be set up: the source is no readable SQLite database, or the "
              "configuration database or the result database cannot be used"},
    CodeWords{1004, "SQLite could not open the working copy of the source"},
    CodeWords{1012,
              "the source or its write-ahead log could not be loaded for the search for deleted "
              "records; an application whose deleted records are looked for in the log alone "
              "needs a source that has one"},
};

}  // namespace

std::string ExplainResultCode(int code) {
  const auto* const entry = std::find_if(kCodeWords.begin(), kCodeWords.end(),
                                         [code](const CodeWords& e) { return e.code == code; });
  return std::string(entry != kCodeWords.end() ? entry->words
                                               : "the library gave a code unknown to this tool");
}

}  // namespace vexascan
