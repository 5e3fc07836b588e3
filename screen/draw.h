#pragma once

#include <span>
#include <string_view>

#include "screen/picture.h"

// Draws on the terminal.
namespace zan {

void blank_window();              // the next drawing starts from a blank screen
void screen_repaint();            // the next drawing sends every row again
CharacterWidth character_width(); // null: the terminal does not show UTF-8
void show_view(const ScreenView& view);
// Draws the lowest row, with the cursor at `column`.
void show_bottom_row(const std::vector<Run>& runs, int column);
// Draws each text on a row of its own. A text that is too long wraps onto the next row, whose own text then
// overwrites the rest. Texts below the last row are left out.
void show_page(std::span<const std::string_view> rows);

} // namespace zan
