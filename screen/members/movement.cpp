#include "app/editor.h"

#include <algorithm>

#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

constexpr std::uint64_t kSection = 16; // lines

// Lines of a page: all rows of the screen but the three at the bottom.
std::uint64_t page_lines() {
  const int rows = g_curses_active ? zan::screen_size().rows : 24;
  return static_cast<std::uint64_t>(std::max(1, rows - 3));
}

} // namespace

bool Editor::is_delim(char c) const { return delimiter_set()[zan::to_byte(c)]; }

zan::ByteSet Editor::delimiter_set() const {
  constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
  return zan::byte_set(word_delimiters_on ? word_delimiters : kWhiteSpace);
}

void Editor::move_left() {
  if (cursor_col > 0) {
    --cursor_col;
  } else if (cursor_row > 0) {
    cursor_col = current.line_length(--cursor_row);
  }
}

void Editor::move_right() {
  if (cursor_col < current.line_length(cursor_row)) {
    ++cursor_col;
  } else if (cursor_row + 1 < current.line_count()) {
    ++cursor_row;
    cursor_col = 0;
  }
}

void Editor::move_up() {
  if (cursor_row != 0) --cursor_row;
  clamp_cursor();
}

void Editor::move_down() {
  if (cursor_row + 1 < current.line_count()) ++cursor_row;
  clamp_cursor();
}

void Editor::move_char(Direction way) { way == Direction::Backup ? move_left() : move_right(); }

void Editor::move_word(Direction way) {
  const zan::LineStore& text = current.lines();
  const zan::ByteSet delimiters = delimiter_set();
  if (way == Direction::Advance) {
    const std::uint64_t length = current.line_length(cursor_row);
    if (cursor_col < length) {
      const std::uint64_t begin = text.line_start(cursor_row);
      const std::uint64_t word_end =
          zan::scan_forward(text, begin + cursor_col, begin + length, delimiters, true);
      cursor_col = zan::scan_forward(text, word_end, begin + length, delimiters, false) - begin;
    }
    if (cursor_col >= length && cursor_row + 1 < current.line_count()) {
      ++cursor_row;
      cursor_col = 0;
    }
    return;
  }
  if (cursor_col == 0 && cursor_row > 0) cursor_col = current.line_length(--cursor_row);
  const std::uint64_t begin = text.line_start(cursor_row);
  const std::uint64_t here = begin + std::min(cursor_col, current.line_length(cursor_row));
  const std::uint64_t word_end = zan::scan_backward(text, begin, here, delimiters, false);
  cursor_col = zan::scan_backward(text, begin, word_end, delimiters, true) - begin;
}

void Editor::line_move(Direction way) {
  if (way == Direction::Advance) {
    if (cursor_row + 1 < current.line_count()) ++cursor_row;
  } else if (cursor_col == 0 && cursor_row != 0) {
    --cursor_row;
  }
  cursor_col = 0;
  status_message = "LINE";
}

void Editor::page_down() { cursor_row = std::min(current.line_count() - 1, cursor_row + page_lines()); }

void Editor::page_up() {
  const std::uint64_t page = page_lines();
  cursor_row = cursor_row > page ? cursor_row - page : 0;
}

void Editor::section_move(Direction way) {
  if (way == Direction::Backup) {
    cursor_row = cursor_row < kSection + 1 ? 0 : cursor_row - kSection;
  } else {
    cursor_row = std::min(current.line_count() - 1, cursor_row + kSection);
  }
  clamp_cursor();
}
