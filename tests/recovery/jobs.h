#pragma once

#include <cstddef>
#include <functional>

namespace recovery {

// Runs jobs 0 to count - 1, each in a process of its own and at most `at_once` at a time: the
// library runs one scan at a time in a process, and a scan that crashes takes no other along.
// `done` is told in the order in which they end whether a job returned true.
void RunJobs(size_t count, size_t at_once, const std::function<bool(size_t)>& job,
             const std::function<void(size_t, bool)>& done);

}  // namespace recovery
