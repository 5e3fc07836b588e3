#pragma once

#include <csignal>

// The signal that asks the program to end and has not been answered yet; 0 when there is none.
extern volatile std::sig_atomic_t g_zan_pending_signal;

namespace zan {

// What holds from the start of main on: a closed pipe or a file size limit is a failed write, not the end of
// the program. Children get the default dispositions.
void install_signal_handlers();

// From now on SIGTERM, SIGHUP, SIGINT and SIGQUIT do not end the program where it stands: they are noted, and
// answered where its text can be rescued first. What the parent wants ignored, as nohup does, stays ignored.
//
// A noted signal sets g_zan_pending_signal and, so that a long command ends early, g_zan_abort_requested.
// Every wait is interrupted; a signal that comes a second later or more ends the program at once. A terminal
// on standard output is cut off: what is written to it goes nowhere, and so holds nothing up.
void answer_ending_signals();

bool output_is_cut_off();
void reconnect_output(); // when it is cut off

// Called when there is nothing left to rescue. From now on no wait is longer than a second: it is
// interrupted, or the pending signal ends the program there.
void limit_waits();

// Ends the program by the pending signal, as if it had never been caught. Returns when there is none.
void end_by_pending_signal();

} // namespace zan
