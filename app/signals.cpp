#include "app/signals.h"

#include "screen/terminal.h"

volatile std::sig_atomic_t g_zan_pending_signal = 0;

namespace zan {

namespace {

void do_nothing(int) {}

void end_by(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void handle_end(int signal) {
  if (g_curses_active) g_zan_pending_signal = signal;
  else end_by(signal);
}

void install(int signal, void (*handler)(int)) {
  struct sigaction previous {};
  // What the parent wants ignored, as nohup does, stays ignored.
  if (sigaction(signal, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

} // namespace

void install_signal_handlers() {
  install(SIGPIPE, do_nothing);
  install(SIGXFSZ, do_nothing);
  install(SIGTERM, handle_end);
  install(SIGHUP, handle_end);
}

void end_by_pending_signal() {
  if (g_zan_pending_signal == 0) return;
  zan_safe_endwin();
  const int signal = g_zan_pending_signal;
  g_zan_pending_signal = 0;
  end_by(signal);
}

} // namespace zan
