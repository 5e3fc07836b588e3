#include "screen/screen_signals.h"

#include <algorithm>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace zan {

namespace {

volatile std::sig_atomic_t g_continued = 0; // SIGCONT has come

void wake_up(int) {} // interrupts the wait for a key, which then checks the terminal's size
void note_continuation(int) { g_continued = 1; }

void restore_and_crash(int signal) {
  crash_exit().restore_terminal();
  std::raise(signal); // SA_RESETHAND has restored the default action, which follows when this returns
}

// Bytes that a signal handler may send.
class SignalBytes {
 public:
  void set(std::string_view bytes) {
    size_ = 0;
    const std::string_view fitting = bytes.substr(0, bytes_.size());
    std::ranges::copy(fitting, bytes_.data());
    size_ = static_cast<std::sig_atomic_t>(fitting.size());
  }
  void send() const {
    [[maybe_unused]] const ssize_t count =
        ::write(STDOUT_FILENO, bytes_.data(), static_cast<std::size_t>(size_));
  }

 private:
  std::array<char, 32> bytes_{};
  volatile std::sig_atomic_t size_ = 0;
};

SignalBytes g_before_stop;
SignalBytes g_after_stop;
void (*g_ncurses_stop)(int) = nullptr;

void stop(int signal) {
  g_before_stop.send();
  g_ncurses_stop(signal); // returns when the program goes on
  g_after_stop.send();
}

void set_handler(int signal, void (*handler)(int), int flags = 0) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

} // namespace

CrashExit& crash_exit() {
  static constinit CrashExit the_exit;
  return the_exit;
}

void CrashExit::remember_modes() {
  has_modes_ = tcgetattr(STDOUT_FILENO, &modes_) == 0;
  // After a stack overflow the handler needs a stack of its own.
  stack_t stack{};
  if (sigaltstack(nullptr, &stack) != 0 || (stack.ss_flags & SS_DISABLE) == 0) return;
  stack.ss_sp = stack_.data();
  stack.ss_size = stack_.size();
  stack.ss_flags = 0;
  sigaltstack(&stack, nullptr);
}

void CrashExit::set_sequences(std::initializer_list<std::string_view> sequences) {
  size_ = 0;
  for (const std::string_view sequence : sequences) add(sequence);
}

// Leaves out padding such as "$<5>", which only ncurses understands.
void CrashExit::add(std::string_view sequence) {
  for (std::size_t wait = 0; (wait = sequence.find("$<")) != std::string_view::npos;) {
    add(sequence.substr(0, wait));
    sequence.remove_prefix(std::min(sequence.size(), sequence.find('>', wait)));
    if (!sequence.empty()) sequence.remove_prefix(1);
  }
  const std::string_view fitting = sequence.substr(0, sequences_.size() - size_);
  std::ranges::copy(fitting, sequences_.data() + size_);
  size_ += fitting.size();
}

void CrashExit::restore_modes() const {
  if (has_modes_) tcsetattr(STDOUT_FILENO, TCSANOW, &modes_);
}

void CrashExit::restore_terminal() const {
  restore_modes();
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  if (poll(&output, 1, 0) <= 0) return;
  [[maybe_unused]] const ssize_t count = ::write(STDOUT_FILENO, sequences_.data(), size_);
}

void ScreenSignals::install() {
  crash_exit().remember_modes();
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], nullptr, &outside_[i]);
  set_handler(SIGWINCH, wake_up);
  set_handler(SIGCONT, note_continuation);
  for (std::size_t i = kFirstCrash; i < kSignals.size(); ++i) {
    if (outside_[i].sa_handler != SIG_DFL) continue;
    set_handler(kSignals[i], restore_and_crash, SA_ONSTACK | static_cast<int>(SA_RESETHAND));
  }
}

void ScreenSignals::adopt_ncurses_stop() {
  struct sigaction action {};
  sigaction(SIGTSTP, nullptr, &action);
  if (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN || action.sa_handler == stop) return;
  g_ncurses_stop = std::exchange(action.sa_handler, stop);
  ncurses_stop_ = action;
  install_ncurses_stop();
}

void ScreenSignals::set_stop_sequences(std::string_view before, std::string_view after) {
  g_before_stop.set(before);
  g_after_stop.set(after);
}

void ScreenSignals::install_ncurses_stop() const {
  if (ncurses_stop_) sigaction(SIGTSTP, &*ncurses_stop_, nullptr);
}

void ScreenSignals::restore() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &outside_[i], nullptr);
}

bool ScreenSignals::take_continuation() { return std::exchange(g_continued, 0) != 0; }

} // namespace zan
