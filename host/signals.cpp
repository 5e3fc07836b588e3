#include "host/signals.h"

#include <array>
#include <unistd.h>

#include "host/abort.h"

volatile std::sig_atomic_t g_zan_pending_signal = 0;

namespace zan {

namespace {

constexpr std::array kEnding{SIGTERM, SIGHUP};
constexpr unsigned kReminder = 1; // seconds

void do_nothing(int) {}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler; // without SA_RESTART: what waits is to look at the flag
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

bool has_handler(int signal, void (*handler)(int)) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == handler;
}

void handle_unless_ignored(int signal, void (*handler)(int)) {
  if (!has_handler(signal, SIG_IGN)) handle(signal, handler);
}

// Interrupts a wait that began just after the look at the flag. From the first time on, nothing holds up
// another signal, whatever the answer waits for; before, it may be one of those that come together: a
// terminal that is closed sends one, its shell another.
void remind(int) {
  for (const int signal : kEnding)
    if (has_handler(signal, note_ending_signal)) handle(signal, SIG_DFL);
  alarm(kReminder);
}

} // namespace

void install_signal_handlers() {
  handle_unless_ignored(SIGPIPE, do_nothing);
  handle_unless_ignored(SIGXFSZ, do_nothing);
}

void answer_ending_signals() {
  for (const int signal : kEnding) handle_unless_ignored(signal, note_ending_signal);
}

void note_ending_signal(int signal) {
  if (g_zan_pending_signal != 0) return;
  g_zan_pending_signal = signal;
  g_zan_abort_requested = 1;
  handle(SIGALRM, remind);
  alarm(kReminder);
}

void end_by_pending_signal() {
  if (g_zan_pending_signal == 0) return;
  handle(g_zan_pending_signal, SIG_DFL);
  std::raise(g_zan_pending_signal);
}

} // namespace zan
