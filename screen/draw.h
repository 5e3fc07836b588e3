#pragma once

#include <span>
#include <string_view>

#include "screen/picture.h"

// Puts things on the terminal.
namespace zan {

void blank_window();              // what is drawn next is drawn on a blank screen
void screen_repaint();            // the next drawing sends every row anew
CharacterWidth character_width(); // null: the terminal does not show UTF-8
void show_view(const ScreenView& view);
// On the lowest row, with the cursor at `column`.
void show_bottom_row(const std::vector<Run>& runs, int column);
// Each text from column 0 of its own row on, unbounded; those below the last row are left out.
void show_page(std::span<const std::string_view> rows);

} // namespace zan
