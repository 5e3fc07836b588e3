#pragma once

#include <cstdint>
#include <functional>
#include <optional>

// What the rest of the program needs of the screen library, without including it.

// True from the start of the screen library to zan_safe_endwin: the terminal is the screen's. A crash gives
// it back as well.
extern bool g_curses_active;

// Gives the terminal back to line mode, when the screen has it. May be called any number of times.
void zan_safe_endwin();

namespace zan {

struct ScreenSize {
  int rows = 24;
  int columns = 80;
  bool operator==(const ScreenSize&) const = default;
};

bool screen_was_started(); // the screen library has been started in this run
// The terminal's size while the screen runs, the last one after it, 24 x 80 before the first time.
ScreenSize screen_size();
void screen_beep();
void screen_flash();

// While one lives, the terminal is the screen's. A visit inside another one leaves the terminal to the outer
// one at its end. A screen that cannot be started is reported on standard error, and the visit is false.
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

// The next key, waiting for it; nothing when the input has ended, the terminal has gone, or a signal asks the
// program to end. A new size of the terminal is no key: `redraw` is called and the wait goes on.
std::optional<int> read_key(const std::function<void()>& redraw);
bool key_waiting(); // read_key would return at once, or soon
bool screen_input_ended();
bool screen_reads_terminal(); // not a pipe or a file
void pass_over_return();      // if it is the next key, and has been typed already

// From now on, while the screen reads a terminal, Ctrl/C is the signal that it is in line mode, so that it
// can end a wait for a file, or a long search. The next wait for a key ends this too.
void make_interrupt_a_signal();
void make_interrupt_a_key();
// The signal has been answered: Ctrl/C is typed again, behind the keys that have arrived.
void retype_interrupt();

// Ctrl/C ends a long repetition ahead of the keys typed before it. It stays among them, so that it is handled
// when its turn comes. begin_repetition is called before, note_interrupt when Ctrl/C has answered a prompt.
// Interrupted is also a repetition whose terminal has gone, or whose program is asked to end.
void begin_repetition();
void note_interrupt();
bool repetition_interrupted();
// What a repetition does although the editor stays the same.
std::uint64_t keys_asked_for();
std::uint64_t bells_rung();

} // namespace zan
