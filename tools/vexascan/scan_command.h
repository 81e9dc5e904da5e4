// "vexascan scan": one scan from the request to the result in its place and the table on screen.
#pragma once

#include <iosfwd>

#include "scan_request.h"

namespace vexascan {

// Returns an exit code. Throws UsageError before anything is touched, and ScanFailure,
// std::system_error or DatabaseError when the work went wrong; the working copies are gone then,
// and an earlier result is as it was.
int RunScan(ScanRequest request, std::ostream& out);

}  // namespace vexascan
