#include "app/editor.h"

#include <algorithm>
#include <utility>

#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

// Columns at which to split a line, so that no part is longer than `width`: after the last blank that fits,
// or in mid-word. Stops at the part that holds the cursor.
std::vector<std::uint64_t> wrap_columns(const zan::LineStore& text, std::uint64_t row, std::uint64_t cursor,
                                        std::uint64_t width) {
  std::vector<std::uint64_t> columns;
  const std::uint64_t begin = text.line_start(row);
  const std::uint64_t length = text.line_end(row) - begin;
  for (std::uint64_t start = 0; length - start > width;) {
    const zan::TextView part = text.slice(begin + start, begin + start + width + 1);
    const std::size_t blank = part.get().rfind(' ');
    const bool usable = blank != std::string_view::npos && blank > 0;
    const std::uint64_t cut = start + (usable ? blank + 1 : width);
    // A blank that is the one byte too many stays: a split after it would leave nothing, again and again.
    if (cut >= length && cursor < cut) break;
    columns.push_back(cut);
    if (cursor < cut) break;
    start = cut;
  }
  return columns;
}

} // namespace

Editor::Text Editor::apply_case_mode(const Text& text) const {
  if (case_mode != "LOWER" && case_mode != "UPPER") return text;
  const bool to_upper = case_mode == "UPPER";
  zan::LineStoreBuilder changed;
  zan::PieceWalker walker(text, 0, text.byte_count());
  for (zan::Chunk chunk; walker.next(chunk);) {
    std::string bytes(chunk.bytes);
    for (char& c : bytes) c = to_upper ? zan::to_upper(c) : zan::to_lower(c);
    chunk.literal ? changed.append_bytes(bytes) : changed.append_text(bytes);
  }
  return changed.finish();
}

void Editor::paste_text(const Text& text) {
  if (text.empty()) return;
  current.insert_text(cursor_row, cursor_col, apply_case_mode(text));
  maybe_wrap_line();
}

void Editor::insert_exactly(std::string_view pasted) {
  if (std::exchange(count_pending, false)) status_message.clear();
  repeat_count = 0;
  if (pasted.empty()) return;
  begin_undo_unit();
  current.insert_text(cursor_row, cursor_col, Text::from_text(zan::with_line_feeds(pasted)));
}

void Editor::paste() { paste_text(paste_text_content()); }

void Editor::maybe_wrap_line() {
  if (!wrap) return;
  int width = screen_width >= 1 ? screen_width : 80;
  if (screen_width == 0 && zan::screen_was_started() && zan::screen_size().columns > 0)
    width = zan::screen_size().columns;
  if (width < 8) return;
  const auto columns =
      wrap_columns(current.lines(), cursor_row, cursor_col, static_cast<std::uint64_t>(width));
  current.split_line_at(cursor_row, columns);
  const auto passed = std::ranges::upper_bound(columns, cursor_col) - columns.begin();
  if (passed == 0) return;
  cursor_col -= columns[static_cast<std::size_t>(passed - 1)];
  cursor_row += static_cast<std::uint64_t>(passed);
}

void Editor::insert_tab_stop() {
  const std::uint64_t width = tab_width >= 1 ? static_cast<std::uint64_t>(tab_width) : 8;
  const std::uint64_t next = (cursor_col / width + 1) * width;
  std::uint64_t col = cursor_col;
  std::uint64_t row = cursor_row;
  current.insert_text(row, col, Text::blanks(next - cursor_col));
  cursor_col = next;
}

void Editor::insert_tab_at_cursor() {
  insert_tab_stop();
  status_message = "Tab";
}

void Editor::open_line() {
  begin_undo_unit();
  current.split_line(cursor_row, 0);
  ++cursor_row;
  cursor_col = 0;
}

void Editor::shift_left_line() {
  begin_undo_unit();
  const auto& text = current.lines();
  if (current.line_length(cursor_row) > 0 && text.byte_at(text.line_start(cursor_row)) == ' ')
    current.delete_at(cursor_row, 0);
}

void Editor::shift_right_line() {
  begin_undo_unit();
  current.insert_char(cursor_row, 0, ' ');
  ++cursor_col;
}

void Editor::toggle_line_numbers() {
  line_numbers = !line_numbers;
  status_message = line_numbers ? "Line numbers ON" : "Line numbers OFF";
}

void Editor::prompt_insert_literal() {
  const std::string answer = prompt_line("ASCII: ");
  if (answer.empty()) return;
  begin_undo_unit();
  const auto value = zan::parse_digits(answer);
  if (value && *value <= 255) {
    current.insert_char(cursor_row, cursor_col, static_cast<char>(static_cast<unsigned char>(*value)));
    ++cursor_col;
  } else {
    paste_text(Text::from_text(answer));
  }
}

void Editor::prompt_find() {
  const std::string answer = prompt_line("Search for: ");
  if (answer.empty()) return;
  search_string = answer;
  find_next(direction);
}
