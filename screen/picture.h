#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/line_store.h"

// The screen as a value: the rows of the terminal, and the cursor's place.
namespace zan {

// The columns of a character on the terminal: 1 or 2; less when it has none of its own, as a combining one.
// Null: the terminal shows ASCII only.
using CharacterWidth = int (*)(char32_t character);

struct Run {
  std::string text; // printable characters only
  bool reverse = false;
  bool operator==(const Run&) const = default;
};

struct ScreenCell {
  int row = 0;
  int column = 0;
  bool operator==(const ScreenCell&) const = default;
};

struct PictureRow {
  std::vector<Run> runs;
  std::string bytes; // that the runs were made from
  std::size_t reverse_begin = 0;
  std::size_t reverse_end = 0;
  bool changed = true; // since it was drawn
};

struct Picture {
  std::vector<PictureRow> rows;
  int columns = 0;
  ScreenCell cursor; // behind the message when its own place is not on the screen
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
  CharacterWidth width = nullptr;
  std::optional<Selection> selection;
  std::string status;
  std::string message;
};

int text_rows(const ScreenView& view);

// The corner moved just far enough to make the cursor visible.
Corner corner_for_cursor(const ScreenView& view);

// Turns the previous picture, or an empty one, into the picture of `view`. A row of the same bytes as before
// is left alone. The cost of a row depends on the terminal's width, not on the line's length.
void update_picture(Picture& picture, const ScreenView& view);

// `bytes` as they appear on a row of `columns`, with bytes reverse_begin to reverse_end in reverse video. A
// tab moves to the next multiple of eight, a carriage return to the start of the row, a backspace one column
// back. Other control bytes become ^X. A UTF-8 character takes as many columns as it has bytes, padded with
// blanks, so that each byte of the text has a column of its own. Each byte of a character that cannot be
// shown as a whole becomes a "?": one that is cut by an edge or by the reversed part, has no width, or is not
// UTF-8. On an ASCII terminal its bytes become M-X or ~X.
std::vector<Run> display_runs(std::string_view bytes, std::size_t reverse_begin, std::size_t reverse_end,
                              int columns, CharacterWidth width);

// A prompt and the answer typed so far, without the last column of the row, which is the cursor's: only the
// tail when not all of it fits. Control bytes of the answer appear as ^X.
struct PromptRow {
  std::vector<Run> runs;
  int columns = 0; // that they take
};
PromptRow prompt_row(std::string_view prompt, std::string_view answer, int columns, CharacterWidth width);

// The printable form of a byte that has none of its own: ^X, ~X or M-X.
std::string visible_byte(char c);
// The UTF-8 character of several bytes at the start of `bytes`; its length is 0 when there is none or it is a
// control character.
struct Utf8Character {
  char32_t code = 0;
  std::size_t length = 0;
};
Utf8Character utf8_character(std::string_view bytes);

} // namespace zan
