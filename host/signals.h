#pragma once

#include <csignal>

// A signal that asks the program to end and that the program has not obeyed yet; 0 when there is none.
extern volatile std::sig_atomic_t g_zan_pending_signal;

namespace zan {

// To be called at the start of main. From then on a closed pipe or a file size limit makes a write fail
// instead of ending the program. These are handlers, not SIG_IGN, so that children get the default
// dispositions.
void install_signal_handlers();

// From now on SIGTERM, SIGHUP, SIGINT and SIGQUIT are only noted: the program ends where it can rescue its
// text first. A signal that the parent process ignores, as nohup does, stays ignored.
//
// The handler sets g_zan_pending_signal and, so that a long command ends early, g_zan_abort_requested. It
// interrupts every wait. A second signal, a second later or more, kills the program. A terminal on standard
// output is replaced by /dev/null, so that no write to it blocks.
void answer_ending_signals();

bool output_is_cut_off(); // /dev/null has taken the terminal's place
void reconnect_output();  // gives the terminal its place back

// To be called when nothing is left to rescue. From then on a timer interrupts every wait after a second, or
// lets the pending signal kill the program there.
void limit_waits();

// Kills the program by the pending signal, as if it had never been caught. Returns when there is none.
void end_by_pending_signal();

} // namespace zan
