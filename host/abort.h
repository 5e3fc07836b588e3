#pragma once

#include <csignal>

// Set by Ctrl/C while a long command runs under an Editor::AbortGuard; 0 or 1. Only the handler sets it, only
// the program's one thread clears it.
extern volatile std::sig_atomic_t g_zan_abort_requested;

namespace zan {

// Set from outside while something long runs, which then stops soon.
using Abort = const volatile std::sig_atomic_t;
inline constexpr std::sig_atomic_t kNeverAborted = 0;

} // namespace zan

void zan_sigint_handler(int signal); // sets the flag and does nothing else
