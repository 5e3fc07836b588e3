#include "app/editor.h"

#include <algorithm>
#include <utility>

namespace {

void push_capped(std::deque<Editor::UndoSnapshot>& history, Editor::UndoSnapshot snapshot) {
  history.push_back(std::move(snapshot));
  if (history.size() > Editor::kHistoryLength) history.pop_front();
}

Editor::UndoSnapshot pop_newest(std::deque<Editor::UndoSnapshot>& history) {
  Editor::UndoSnapshot snapshot = std::move(history.back());
  history.pop_back();
  return snapshot;
}

} // namespace

void Editor::begin_undo_unit() {
  redo_stack.clear();
  push_capped(undo_stack, capture_snapshot());
}

bool Editor::undo_last(bool verbose) {
  if (undo_stack.empty()) {
    status_message = "Nothing to undo";
    say(verbose, "?Nothing to undo\n");
    return false;
  }
  push_capped(redo_stack, capture_snapshot());
  restore_snapshot(pop_newest(undo_stack));
  status_message = "UNDO";
  say(verbose, "Undo completed\n");
  return true;
}

bool Editor::redo_last(bool verbose) {
  if (redo_stack.empty()) {
    status_message = "Nothing to redo";
    say(verbose, "?Nothing to redo\n");
    return false;
  }
  push_capped(undo_stack, capture_snapshot());
  restore_snapshot(pop_newest(redo_stack));
  status_message = "REDO";
  say(verbose, "Redo completed\n");
  return true;
}

// The registry is shared and not brought up to date first: `buffer` holds the current buffer's text. So a
// snapshot costs the same for any number and size of buffers.
Editor::UndoSnapshot Editor::capture_snapshot() {
  return {.buffer = current,
          .buffers = buffers,
          .buffer_name = current_buffer_name,
          .row = cursor_row,
          .col = cursor_col,
          .top = top_row,
          .direction = direction,
          .search = search_string,
          .deleted_char = deleted_char,
          .deleted_line = deleted_line,
          .deleted_word = deleted_word,
          .overstrike = overstrike};
}

void Editor::restore_snapshot(UndoSnapshot snapshot) {
  current = std::move(snapshot.buffer);
  buffers = std::move(snapshot.buffers);
  current_buffer_name = std::move(snapshot.buffer_name);
  cursor_row = snapshot.row;
  cursor_col = snapshot.col;
  top_row = snapshot.top;
  direction = snapshot.direction;
  search_string = std::move(snapshot.search);
  deleted_char = std::move(snapshot.deleted_char);
  deleted_line = std::move(snapshot.deleted_line);
  deleted_word = std::move(snapshot.deleted_word);
  overstrike = snapshot.overstrike;
  clamp_cursor();
  save_current_buffer_state();
}

void Editor::clamp_cursor() {
  cursor_row = std::min(cursor_row, current.line_count() - 1);
  cursor_col = std::min(cursor_col, current.line_length(cursor_row));
}
