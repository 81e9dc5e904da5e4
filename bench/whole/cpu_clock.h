#pragma once

#include <sys/resource.h>

#include <cstdint>
#include <ctime>
#include <fstream>
#include <string>

namespace bench {

// Processor time of this process, system time included. Other processes of a busy machine do not
// count in it.
inline double CpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Of the processes that this one started and waited for.
inline double CpuSecondsOfChildren() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The most memory that this program held. ru_maxrss would also count what the program that started
// it held before.
inline int64_t PeakKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stoll(line.substr(6));
  }
  return 0;
}

}  // namespace bench
