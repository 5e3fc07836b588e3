#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/line_store.h"

// The screen as a value: what stands on every row of the terminal, and where the cursor is.
namespace zan {

struct Run {
  std::string text; // printable characters only, each one column wide
  bool reverse = false;
  bool operator==(const Run&) const = default;
};

struct ScreenCell {
  int row = 0;
  int column = 0;
  bool operator==(const ScreenCell&) const = default;
};

struct Picture {
  std::vector<std::vector<Run>> rows;
  std::optional<ScreenCell> cursor; // nothing when its place is not on the screen
  bool operator==(const Picture&) const = default;
};

// The first line and the first column that are shown.
struct Corner {
  std::uint64_t top_row = 0;
  std::uint64_t left_col = 0;
  bool operator==(const Corner&) const = default;
};

struct Selection { // the end is excluded
  Position start;
  Position end;
};

// What the picture is made from.
struct ScreenView {
  LineStore text;
  Position cursor;
  Corner corner;
  int rows = 24; // of the terminal
  int columns = 80;
  int screen_lines = 0; // most rows of text; 0: all but the three lowest rows
  int top_margin = 0;   // rows, counted from 1, between which the cursor stays; 0: none
  int bottom_margin = 0;
  bool line_numbers = false;
  bool truncate = false; // never scroll sideways
  bool utf8 = false;     // the terminal shows UTF-8
  std::optional<Selection> selection;
  std::string status;
  std::string message;
};

int text_rows(const ScreenView& view);

// The corner that brings the cursor into the visible part, moved no further than that takes.
Corner corner_for_cursor(const ScreenView& view);

// Looks at no more of a line than fits on its row.
Picture make_picture(const ScreenView& view);

// `bytes` as they appear from column 0 of a row of `columns`, with bytes reverse_begin to reverse_end in
// reverse video: a tab moves to the next multiple of eight, a carriage return to the start of the row and a
// backspace one back, other control bytes become ^X and what is not UTF-8 becomes M-X or ~X.
std::vector<Run> display_runs(std::string_view bytes, std::size_t reverse_begin, std::size_t reverse_end,
                              int columns, bool utf8);

// The printable form of a byte that has none of its own: ^X, ~X or M-X.
std::string visible_byte(char c);
// Length of the UTF-8 character at the start of `bytes`, 0 when there is none or it is a control character.
std::size_t utf8_length(std::string_view bytes);

} // namespace zan
