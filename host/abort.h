#pragma once

#include <csignal>

// 0 or 1. Ctrl/C sets it while a long command runs under an Editor::AbortGuard. Only signal handlers set it,
// and only the program's one thread clears it.
extern volatile std::sig_atomic_t g_zan_abort_requested;

namespace zan {

// Long operations poll it and stop soon after it is set.
using Abort = const volatile std::sig_atomic_t;
inline constexpr std::sig_atomic_t kNeverAborted = 0;

} // namespace zan

void zan_sigint_handler(int signal); // sets the flag and does nothing else
