#include "screen/terminal.h"

bool g_curses_active = false;

void zan_safe_endwin() { g_curses_active = false; }

namespace zan {

bool screen_was_started() { return false; }

ScreenSize screen_size() { return {}; }

void screen_beep() {}

void screen_flash() {}

} // namespace zan
