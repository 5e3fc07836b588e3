#pragma once

#include <csignal>

// The signal that asks the program to end and has not been answered yet; 0 when there is none.
extern volatile std::sig_atomic_t g_zan_pending_signal;

namespace zan {

// What holds from the start of main on: a closed pipe or a file size limit is a failed write, not the end of
// the program; SIGTERM and SIGHUP end it at once in line mode, and after the terminal has been given back
// while the screen has it. Children get the default dispositions.
void install_signal_handlers();

// Ends the program by the pending signal, as if it had never been caught. Returns when there is none.
void end_by_pending_signal();

} // namespace zan
