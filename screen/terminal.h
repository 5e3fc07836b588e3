#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

// What the rest of the program needs of ncurses, without including it.

// True while the screen owns the terminal: from the start of a visit to zan_safe_endwin.
extern bool g_curses_active;

// Returns the terminal to line mode if the screen owns it. May be called any number of times.
void zan_safe_endwin();

namespace zan {

struct ScreenSize {
  int rows = 24;
  int columns = 80;
  bool operator==(const ScreenSize&) const = default;
};

bool screen_was_started(); // ncurses has been started in this run
// The terminal's size while the screen runs; its last size afterwards; 24 x 80 before the first visit.
ScreenSize screen_size();
void screen_beep();
void screen_flash();

// The screen owns the terminal while a visit lives. Visits nest: only the outermost starts and ends the
// screen. If it cannot be started, that is reported on standard error and the visit is false.
class ScreenVisit {
 public:
  explicit ScreenVisit(bool pc_keypad);
  ~ScreenVisit();
  ScreenVisit(const ScreenVisit&) = delete;
  ScreenVisit& operator=(const ScreenVisit&) = delete;
  explicit operator bool() const { return started_; }

 private:
  bool started_ = false;
};

// Waits for the next key. Nothing when the input has ended, the terminal has gone, or a signal asks the
// program to end. When the terminal's size changes, `redraw` is called and the wait continues.
std::optional<int> read_key(const std::function<void()>& redraw);
// From now on a paste comes as one key, kPasted, if the terminal can mark where pastes begin and end; else as
// the keys that its bytes are. That ends with the visit. Costs little when nothing changes.
void set_exact_paste(bool exact);
std::string take_pasted(); // the bytes of the last kPasted, as the terminal sent them
bool key_waiting();        // read_key would return at once, or within the escape delay
bool screen_input_ended();
bool screen_reads_terminal(); // not a pipe or a file
void discard_end_of_answer(); // if the next key ends an answer and has been typed already

// From now on, while the screen reads a terminal, Ctrl/C sends SIGINT, as in line mode, so that it can end a
// wait for a file or a long search. The next wait for a key makes it a key again.
void make_interrupt_a_signal();
void make_interrupt_a_key();
// After the signal has been handled: appends Ctrl/C to the type-ahead, so that it is a key as well.
void retype_interrupt();

// Ctrl/C ends a long repetition even when other keys were typed before it. It stays in the type-ahead and is
// handled as a key in its turn. Call begin_repetition before the repetition, and note_interrupt when Ctrl/C
// has cancelled a prompt. A repetition is also interrupted when the terminal has gone or a signal asks the
// program to end.
void begin_repetition();
void note_interrupt();
bool repetition_interrupted();
// Effects of a repetition that leave the editor's state unchanged.
std::uint64_t keys_asked_for();
std::uint64_t bells_rung();

} // namespace zan
