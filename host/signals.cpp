#include "host/signals.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "host/abort.h"

volatile std::sig_atomic_t g_zan_pending_signal = 0;

namespace zan {

namespace {

constexpr std::array kEnding{SIGTERM, SIGHUP, SIGINT, SIGQUIT};
constexpr unsigned kTick = 1; // seconds

volatile std::sig_atomic_t terminal_cut_off = -1; // a duplicate of the terminal's descriptor

void do_nothing(int) {}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler; // no SA_RESTART: waits return and check the flag
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

// The screen library repeats an interrupted write until the terminal is read, which may be never.
void cut_off_terminal() {
  termios modes{};
  if (tcgetattr(STDOUT_FILENO, &modes) != 0) return;
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return;
  terminal_cut_off = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (terminal_cut_off >= 0) dup2(nowhere, STDOUT_FILENO);
  ::close(nowhere);
}

void note_ending_signal(int signal);

// SIGALRM interrupts again, each second, a wait that began just after the flag was checked. From the first
// tick on, a second signal kills. Before that it may belong to the first one: a terminal that is closed sends
// one, and its shell another.
void interrupt_again(int) {
  const int error = errno;
  for (const int signal : kEnding)
    if (has_handler(signal, note_ending_signal)) handle(signal, SIG_DFL);
  alarm(kTick);
  errno = error;
}

void note_ending_signal(int signal) {
  if (g_zan_pending_signal != 0) return;
  const int error = errno;
  g_zan_pending_signal = signal;
  g_zan_abort_requested = 1;
  cut_off_terminal();
  handle(SIGALRM, interrupt_again);
  alarm(kTick);
  errno = error;
}

void end_now(int) { end_by_pending_signal(); }

} // namespace

void install_signal_handlers() {
  handle_unless_ignored(SIGPIPE, do_nothing);
  handle_unless_ignored(SIGXFSZ, do_nothing);
}

void answer_ending_signals() {
  for (const int signal : kEnding) handle_unless_ignored(signal, note_ending_signal);
}

bool output_is_cut_off() { return terminal_cut_off >= 0; }

void reconnect_output() {
  if (terminal_cut_off < 0) return;
  dup2(terminal_cut_off, STDOUT_FILENO);
  ::close(terminal_cut_off);
  terminal_cut_off = -1;
}

void limit_waits() {
  handle(SIGALRM, g_zan_pending_signal != 0 ? end_now : interrupt_again);
  alarm(kTick);
}

void end_by_pending_signal() {
  if (g_zan_pending_signal == 0) return;
  handle(g_zan_pending_signal, SIG_DFL);
  std::raise(g_zan_pending_signal);
}

} // namespace zan
