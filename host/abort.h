#pragma once

#include <csignal>

// Set by Ctrl/C while a long command runs under an Editor::AbortGuard; 0 or 1. Only the handler sets it, only
// the program's one thread clears it.
extern volatile std::sig_atomic_t g_zan_abort_requested;

void zan_sigint_handler(int signal); // sets the flag and does nothing else
