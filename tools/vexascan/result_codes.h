// The library's result codes in words for a reader who does not know them.
#pragma once

#include <string>

namespace vexascan {

std::string ExplainResultCode(int code);

}  // namespace vexascan
