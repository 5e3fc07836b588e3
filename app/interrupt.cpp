#include "app/editor.h"

Editor::AbortGuard::AbortGuard() {
  g_zan_abort_requested = 0;
  struct sigaction action {};
  action.sa_handler = zan_sigint_handler;
  sigemptyset(&action.sa_mask);
  // Without SA_RESTART, so that a question waiting for its answer ends at once.
  sigaction(SIGINT, &action, &previous_);
}

Editor::AbortGuard::~AbortGuard() {
  sigaction(SIGINT, &previous_, nullptr);
  // A Ctrl/C that came too late for this command must not stop a search outside any guard.
  g_zan_abort_requested = 0;
}

bool Editor::check_abort(bool verbose) {
  if (g_zan_abort_requested == 0) return false;
  g_zan_abort_requested = 0;
  status_message = "Abort";
  say(verbose, "*Abort*\n");
  return true;
}
