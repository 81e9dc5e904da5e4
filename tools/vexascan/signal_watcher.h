// Turning Ctrl-C into a scan that ends in good order. The signals are held back from the whole
// process for as long as working copies exist, and one thread waits for them and acts; so neither
// a signal in the middle of a copy nor one during clean-up leaves anything behind.
#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace vexascan {

// Holds SIGINT, SIGTERM and SIGHUP back while it lives. Threads started meanwhile inherit that.
class SignalBlock {
 public:
  SignalBlock();
  ~SignalBlock();
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t before_{};
};

// Calls `act` for every such signal: at once for one that was held back before, later on a thread
// of its own. Needs a SignalBlock that lives longer.
class SignalWatcher {
 public:
  explicit SignalWatcher(std::function<void()> act);
  ~SignalWatcher();
  SignalWatcher(const SignalWatcher&) = delete;
  SignalWatcher& operator=(const SignalWatcher&) = delete;

  bool SawSignal() const { return saw_signal_; }

 private:
  void TakeHeldBack();
  void Watch();

  std::function<void()> act_;
  std::atomic<bool> saw_signal_{false};
  std::atomic<bool> done_{false};
  std::thread thread_;
};

}  // namespace vexascan
