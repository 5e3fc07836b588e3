#include "app/editor.h"

#include <algorithm>

#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

char flip_case(char c) {
  if (zan::is_lower(c)) return zan::to_upper(c);
  return zan::is_upper(c) ? zan::to_lower(c) : c;
}

// Does nothing beyond the line's end.
void flip_byte(TextBuffer& buffer, std::uint64_t row, std::uint64_t col) {
  if (col >= buffer.line_length(row)) return;
  const char flipped = flip_case(buffer.lines().byte_at(buffer.lines().line_start(row) + col));
  buffer.replace_in_line(row, col, 1, std::string_view(&flipped, 1));
}

Editor::Text one_byte(char c) { return Editor::Text::from_text(std::string_view(&c, 1)); }

} // namespace

// ---- deleting and undeleting

void Editor::delete_char_at_cursor() {
  if (const char removed = current.delete_at(cursor_row, cursor_col); removed != 0)
    deleted_char = one_byte(removed);
}

void Editor::delete_char_left() {
  if (const char removed = current.backspace(cursor_row, cursor_col); removed != 0)
    deleted_char = one_byte(removed);
}

void Editor::delete_word() {
  deleted_word = current.delete_word_forward(cursor_row, cursor_col, word_delimiters);
}

void Editor::delete_word_left() {
  deleted_word = current.delete_word_backward(cursor_row, cursor_col, word_delimiters);
  status_message = deleted_word.empty() ? "No word" : "Deleted word";
}

void Editor::delete_line() {
  deleted_line = current.delete_line(cursor_row);
  cursor_row = std::min(cursor_row, current.line_count() - 1);
  cursor_col = 0;
}

void Editor::delete_eol() { set_paste_text(current.delete_to_eol(cursor_row, cursor_col)); }

void Editor::undelete_char() { paste_text(deleted_char); }

void Editor::undelete_word() { paste_text(deleted_word); }

void Editor::undelete_line() {
  if (deleted_line.empty()) {
    status_message = "No deleted line";
  } else {
    paste_text(deleted_line);
  }
}

// ---- select, cut, append, replace

void Editor::start_select() {
  if (current.has_mark()) {
    select_error("Select range is already active");
    return;
  }
  current.set_mark(cursor_row, cursor_col);
  status_message = "SELECT";
}

std::optional<EditorState::SelSpan> EditorState::active_select_span() const {
  if (!current.has_mark()) return std::nullopt;
  const zan::Position mark{current.mark_row(), current.mark_col()};
  const zan::Position cursor{cursor_row, cursor_col};
  const auto [start, end] = std::minmax(mark, cursor);
  return SelSpan{start.row, start.col, end.row, end.col};
}

void Editor::clear_select() { current.clear_mark(); }

void Editor::select_error(const std::string& message) {
  status_message = message;
  if (!zan::screen_was_started()) return;
  console.flush();
  zan::screen_beep();
}

// Deletes the selected text, passes it to `use`, and puts the cursor where it was. Without a select range: an
// error. The cursor is set last, because `use` may change PASTE, and PASTE may be the current buffer.
void Editor::take_selected(void (Editor::*use)(const Text&)) {
  const auto span = active_select_span();
  if (!span) {
    select_error("No select range active");
    return;
  }
  const Text text = current.delete_span(span->start_row, span->start_col, span->end_row, span->end_col);
  if (use != nullptr) (this->*use)(text);
  cursor_row = std::min(span->start_row, current.line_count() - 1);
  cursor_col = std::min(span->start_col, current.line_length(cursor_row));
  clear_select();
}

void Editor::cut_select() { take_selected(&Editor::set_paste_text); }

void Editor::append_select() { take_selected(&Editor::append_paste_text); }

void Editor::replace_select_with_paste() {
  if (!select_active()) {
    select_error("No select range active");
    return;
  }
  take_selected(nullptr);
  paste();
}

// ---- changing case

void Editor::change_case_char() {
  begin_undo_unit();
  if (const auto span = active_select_span()) {
    current.transform_span({span->start_row, span->start_col}, {span->end_row, span->end_col}, flip_case);
    clear_select();
  } else if (direction == Direction::Advance) {
    if (cursor_col >= current.line_length(cursor_row)) return;
    flip_byte(current, cursor_row, cursor_col);
    move_right();
  } else if (cursor_col != 0) {
    flip_byte(current, cursor_row, cursor_col - 1);
    move_left();
  }
}
