#include "screen/terminal_description.h"

#include <unistd.h>

#include "screen/curses.h"

#include <term.h> // defines macros of the names of all capabilities, so it stays in this file

bool zan::described_for_a_screen() {
  TERMINAL* const before = cur_term;
  int error = 0;
  if (setupterm(nullptr, STDOUT_FILENO, &error) != OK) {
    set_curterm(before);
    return false;
  }
  const char* const places_cursor = cursor_address;
  const bool can = places_cursor != nullptr && *places_cursor != '\0';
  TERMINAL* const looked_at = set_curterm(before);
  if (looked_at != before) del_curterm(looked_at);
  return can;
}
