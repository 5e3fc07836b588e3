#pragma once

#include <initializer_list>
#include <signal.h> // <csignal> need not declare the masks

namespace zan {

// Blocks the signals that ask the program to end, and `others`, while it lives.
class HeldSignals {
 public:
  explicit HeldSignals(std::initializer_list<int> others = {}) {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&held, signal);
    for (const int signal : others) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~HeldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  const sigset_t& mask_before() const { return before_; }

 private:
  sigset_t before_{};
};

} // namespace zan
