// What the process tells its caller, and the two exceptions that lead there.
#pragma once

#include <stdexcept>

namespace vexascan {

constexpr int kExitSuccess = 0;
constexpr int kExitScanFailed = 1;
constexpr int kExitUsage = 2;

// The request itself cannot be carried out as it was put; nothing was touched. Exit 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The request was sound and the work went wrong. Exit 1.
class ScanFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace vexascan
