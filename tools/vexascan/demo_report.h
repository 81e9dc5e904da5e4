// The reckoning of the demo: the result held against everything that was ever written.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "demo_messages.h"

namespace vexascan {

struct KindReport {
  Fate fate = Fate::kLive;
  int deleted = 0;
  int standing = 0;
  int came_back = 0;                 // of all
  int came_back_standing = 0;        // of those that stand
  std::vector<std::string> samples;  // some texts that came back

  // A sample without anything to bring back would prove nothing.
  bool GoodEnough() const { return standing > 0 && came_back_standing * 10 >= standing * 9; }
};

struct DemoReport {
  std::vector<KindReport> kinds;
  int invented = 0;  // result rows that equal no message ever written
  bool GoodEnough() const;
};

// Two rows are equal when all columns but the row id are: a row id may be lost or guessed.
DemoReport Reckon(const std::vector<Message>& messages, const std::filesystem::path& database,
                  const std::filesystem::path& result);

void PrintReport(const DemoReport& report, std::ostream& out);

}  // namespace vexascan
