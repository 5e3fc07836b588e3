#pragma once

// What the rest of the program needs of the screen library, without including it.

// True from the start of the screen library to zan_safe_endwin: the terminal is the screen's.
extern bool g_curses_active;

// Gives the terminal back to line mode, when the screen has it. May be called any number of times.
void zan_safe_endwin();

namespace zan {

struct ScreenSize {
  int rows = 24;
  int columns = 80;
};

bool screen_was_started(); // the screen library has been started in this run
// The terminal's size while the screen runs, the last one after it, 24 x 80 before the first time.
ScreenSize screen_size();
void screen_beep();
void screen_flash();

} // namespace zan
