// What the user asks of one scan, from the command line or from a parameter file, and the names
// that stand for the library's numbers.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vexascan {

// The index of a name is the library's number for it.
constexpr std::array<std::string_view, 2> kSystemNames{"android", "ios"};
constexpr std::array<std::string_view, 12> kApplicationNames{
    "contact",   "sms",      "callhistory", "note",   "whatsapp",     "safari",
    "safariHis", "calendar", "reminder",    "wechat", "wechatMoment", "kakaotalk"};
constexpr std::array<std::string_view, 4> kRangeNames{"all", "live", "deleted", "none"};

enum class Range { kAll = 0, kLive = 1, kDeleted = 2, kNone = 3 };

struct ScanRequest {
  int system_type = 0;
  int data_type = 0;
  std::optional<int> system_version;  // absent: every known layout is tried
  Range range = Range::kAll;
  std::filesystem::path source;
  std::filesystem::path result;
  std::filesystem::path config_folder;  // empty: the shipped configuration
  std::filesystem::path log_folder;     // empty: beside the result
  std::filesystem::path temp_folder;    // empty: the system's
};

// Reads a parameter file: one JSON object with the library's own keys. "temp_folder" is the folder
// below which the private one is made; an empty text means the system's. Throws UsageError.
ScanRequest ReadParameterFile(const std::filesystem::path& path);

// The library's parameter text for one scan on staged files.
std::string ParameterText(const ScanRequest& request, Range range,
                          const std::filesystem::path& source, const std::filesystem::path& result,
                          const std::filesystem::path& temp_folder);

}  // namespace vexascan
