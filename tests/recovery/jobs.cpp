#include "recovery/jobs.h"

#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <map>
#include <system_error>

namespace recovery {
namespace {

[[noreturn]] void RunChild(const std::function<bool(size_t)>& job, size_t index) {
  bool good = false;
  try {
    good = job(index);
  } catch (const std::exception& fault) {
    std::cerr << "recovery: " << fault.what() << std::endl;
  }
  _exit(good ? 0 : 1);  // what the parent has not yet written is the parent's to write
}

}  // namespace

void RunJobs(size_t count, size_t at_once, const std::function<bool(size_t)>& job,
             const std::function<void(size_t, bool)>& done) {
  std::map<pid_t, size_t> running;
  for (size_t next = 0; next < count || !running.empty();) {
    if (next < count && running.size() < (at_once == 0 ? 1 : at_once)) {
      std::cout.flush();
      const pid_t child = fork();
      if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
      if (child == 0) RunChild(job, next);
      running[child] = next++;
      continue;
    }
    int status = 0;
    const pid_t child = waitpid(-1, &status, 0);
    const auto found = running.find(child);
    if (found == running.end()) continue;
    done(found->second, WIFEXITED(status) && WEXITSTATUS(status) == 0);
    running.erase(found);
  }
}

}  // namespace recovery
