#include "app/editor.h"
#include "host/signals.h"
#include "screen/terminal.h"

namespace {

// Clears the flag, unless a signal asks the program to end: that signal stops every later command too.
void forget_abort() {
  if (g_zan_abort_requested != 0 && g_zan_pending_signal == 0) zan::retype_interrupt();
  g_zan_abort_requested = g_zan_pending_signal != 0 ? 1 : 0;
}

} // namespace

Editor::AbortGuard::AbortGuard() {
  forget_abort();
  struct sigaction action {};
  action.sa_handler = zan_sigint_handler;
  sigemptyset(&action.sa_mask);
  // No SA_RESTART: a question that waits for its answer must end at once.
  sigaction(SIGINT, &action, &previous_);
  zan::make_interrupt_a_signal();
}

Editor::AbortGuard::~AbortGuard() {
  zan::make_interrupt_a_key();
  sigaction(SIGINT, &previous_, nullptr);
  // A Ctrl/C that came too late for this command must not stop a search outside any guard.
  forget_abort();
}

bool Editor::check_abort(bool verbose) {
  if (g_zan_abort_requested == 0) return false;
  forget_abort();
  status_message = "Abort";
  say(verbose, "*Abort*\n");
  return true;
}
