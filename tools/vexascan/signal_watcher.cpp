#include "signal_watcher.h"

#include <pthread.h>
#include <time.h>

#include <utility>

namespace vexascan {
namespace {

// Wakes the watcher at its end; nobody else's business.
constexpr int kWakeUp = SIGUSR1;

sigset_t WatchedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, kWakeUp}) {
    sigaddset(&signals, signal);
  }
  return signals;
}

}  // namespace

SignalBlock::SignalBlock() {
  const sigset_t signals = WatchedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

SignalBlock::~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

SignalWatcher::SignalWatcher(std::function<void()> act) : act_(std::move(act)) {
  TakeHeldBack();
  thread_ = std::thread([this] { Watch(); });
}

SignalWatcher::~SignalWatcher() {
  done_ = true;
  pthread_kill(thread_.native_handle(), kWakeUp);
  thread_.join();
}

void SignalWatcher::TakeHeldBack() {
  const sigset_t signals = WatchedSignals();
  const timespec at_once{};
  for (int signal = 0; (signal = sigtimedwait(&signals, nullptr, &at_once)) > 0;) {
    if (signal != kWakeUp) {
      saw_signal_ = true;
      act_();
    }
  }
}

void SignalWatcher::Watch() {
  const sigset_t signals = WatchedSignals();
  while (!done_) {
    int signal = 0;
    if (sigwait(&signals, &signal) == 0 && signal != kWakeUp) {
      saw_signal_ = true;
      act_();
    }
  }
}

}  // namespace vexascan
