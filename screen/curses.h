#pragma once

// The one way to ncurses: without its macros, whose names (erase, move, clear, timeout) are ordinary words.
#define NCURSES_NOMACROS 1
#define _XOPEN_SOURCE_EXTENDED 1 // NOLINT(bugprone-reserved-identifier): ncurses asks for it
#include <ncurses.h>
