#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

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

// For a repetition, which Ctrl/C ends: forget_interrupt before it; take_interrupt is true once Ctrl/C has
// been typed (it is taken out of the keys typed ahead, the others stay) or has answered a prompt, or no key
// can come.
void forget_interrupt();
void note_interrupt();
bool take_interrupt();
// What is read ahead goes from line mode to the screen and back; of a terminal, Return is a line feed there.
void give_input(std::string bytes);
std::string take_input();
// Grows with every key asked for and every bell: what a repetition does although the editor stays the same.
std::uint64_t screen_events();

} // namespace zan
