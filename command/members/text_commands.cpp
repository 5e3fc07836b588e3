// Commands that rewrite the text of lines where they stand, each in one pass over the lines it touches.
#include "app/editor.h"

#include <algorithm>
#include <cstdio>

#include "command/fill.h"
#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

// Rewrites each line of the range; the text around it is shared. `edit` gets the line and its index in the
// range, appends the new line to the builder, and returns whether it differs. When no line does, the buffer
// stays as it is, the modified flag included.
template <typename Edit> void rewrite_lines(TextBuffer& buffer, const Editor::LineRange& range, Edit edit) {
  const zan::LineStore& text = buffer.lines();
  if (range.first > range.last) return;
  zan::LineStoreBuilder rewritten;
  rewritten.append(text, 0, text.line_start(range.first));
  zan::LineWalker walker(text, range.first);
  bool changed = false;
  std::string_view line;
  for (std::uint64_t i = 0; i <= range.last - range.first && walker.next(line); ++i) {
    if (i > 0) rewritten.append_break();
    if (edit(line, i, rewritten)) changed = true;
  }
  if (!changed) return;
  rewritten.append(text, text.line_end(range.last), text.byte_count());
  buffer.replace_lines(rewritten.finish());
}

// Replaces leading blanks and tabs by the blanks that they fill with tab stops `width` apart. These may
// exceed memory: many of them are shared.
bool put_blank_indent(std::string_view line, std::uint64_t width, zan::LineStoreBuilder& out) {
  constexpr std::uint64_t kFew = 4096;
  std::uint64_t column = 0;
  bool changed = false;
  std::size_t used = 0;
  for (; used < line.size() && (line[used] == ' ' || line[used] == '\t'); ++used) {
    changed = changed || line[used] == '\t';
    column = line[used] == ' ' ? column + 1 : (column / width + 1) * width;
  }
  if (!changed) used = 0;
  else if (column > kFew) out.append(zan::LineStore::blanks(column));
  else out.append_bytes(std::string(static_cast<std::size_t>(column), ' '));
  out.append_bytes(line.substr(used));
  return changed;
}

// Puts a sequence number over the first eight bytes of a line, or before a shorter line.
bool put_sequence_number(std::string_view line, int number, zan::LineStoreBuilder& out) {
  constexpr std::size_t kField = 8;
  char text[24] = "";
  std::snprintf(text, sizeof text, "%05d.00", number); // at least eight bytes
  const std::string_view field(text, kField);
  out.append_bytes(field);
  out.append_bytes(line.size() < kField ? line : line.substr(kField));
  return line.size() < kField || !line.starts_with(field);
}

// start + index * step in 32 bits, wrapping round.
int sequence_number(int start, int step, std::uint64_t index) {
  return static_cast<int>(static_cast<std::uint32_t>(start) +
                          static_cast<std::uint32_t>(index) * static_cast<std::uint32_t>(step));
}

// In these messages 0 is "0 line".
std::string counted_lines(std::uint64_t count) { return count == 0 ? "0 line" : zan::counted(count, "line"); }

std::uint64_t fill_width(const EditorState& editor) {
  if (editor.screen_width >= 1) return static_cast<std::uint64_t>(editor.screen_width);
  if (zan::screen_was_started())
    return static_cast<std::uint64_t>(std::max(20, zan::screen_size().columns - 1));
  return 79;
}

} // namespace

void Editor::fill_command(const std::string& arg, bool verbose) {
  if (const auto span = active_select_span()) {
    fill_select(*span, verbose);
    return;
  }
  if (zan::trim(arg).empty()) {
    select_error("No select range active");
    say(verbose, "?No select range active\n");
    return;
  }
  const auto range = range_or_cursor_line(arg, verbose);
  if (!range) return;
  const auto lines = current.lines_in_range(range->first, range->last);
  const Text filled = zan::fill_words(lines.value_or(Text()), fill_width(*this));
  if (filled.empty()) return;
  begin_undo_unit();
  current.delete_range(range->first, range->last);
  current.insert_lines(range->first, filled);
  cursor_row = range->first;
  cursor_col = 0;
  status_message = "Filled";
  say(verbose, std::to_string(filled.line_count()), " lines after fill\n");
}

void Editor::fill_select(const SelSpan& span, bool verbose) {
  const Text selected = current.text_in_span(span.start_row, span.start_col, span.end_row, span.end_col);
  if (selected.empty()) {
    clear_select();
    return;
  }
  const std::string filled = zan::fill_span(selected.to_string(), fill_width(*this));
  begin_undo_unit();
  current.delete_span(span.start_row, span.start_col, span.end_row, span.end_col);
  cursor_row = std::min(span.start_row, current.line_count() - 1);
  cursor_col = std::min(span.start_col, current.line_length(cursor_row));
  std::uint64_t row = cursor_row;
  std::uint64_t col = cursor_col;
  current.insert_text(row, col, Text::from_text(filled));
  clear_select();
  status_message = "Filled";
  say(verbose, "Filled select range\n");
}

void Editor::tab_adjust_command(const std::string& arg, bool verbose) {
  const auto range = range_or_cursor_line(arg, verbose);
  if (!range) return;
  const std::uint64_t width = tab_width >= 1 ? static_cast<std::uint64_t>(tab_width) : 8;
  rewrite_lines(current, *range, [&](std::string_view line, std::uint64_t, auto& out) {
    return put_blank_indent(line, width, out);
  });
  const std::uint64_t count = range->last + 1 - std::min(range->first, range->last + 1);
  say(verbose, "Tab adjust ", counted_lines(count), "\n");
}

void Editor::resequence_command(const std::string&, const Qualifiers& quals, bool verbose) {
  int start = quals.sequence ? quals.seq_start : 100;
  int step = quals.sequence ? quals.seq_step : 100;
  if (start < 1) start = 100;
  if (step <= 0) step = 100;
  if (quals.duplicate) step = 0;
  rewrite_lines(current, {0, current.line_count() - 1},
                [&](std::string_view line, std::uint64_t i, auto& out) {
                  return put_sequence_number(line, sequence_number(start, step, i), out);
                });
  status_message = "Lines renumbered";
  say(verbose, "Lines renumbered\n");
}

void Editor::xlate_command(const std::string& arg, bool verbose) {
  std::string_view rest = zan::trim(arg);
  if (rest.empty()) {
    say(verbose, xlate_map.empty() ? "XLATE table empty\n" : "XLATE table:\n");
    for (const auto& [from, to] : xlate_map)
      say(verbose, "  '", std::string_view(&from, 1), "' -> '", std::string_view(&to, 1), "'\n");
    return;
  }
  const std::string_view first = zan::take_word(rest);
  const std::string_view second = zan::take_word(rest);
  if (second.empty()) {
    report(verbose, "?XLATE expects: XLATE from to [range]");
    return;
  }
  const char from = first.front();
  const char to = second.front();
  xlate_map[from] = to;
  const auto range = range_or_cursor_line(trim(rest), verbose);
  if (!range) return;
  std::uint64_t count = 0;
  std::string edited;
  rewrite_lines(current, *range, [&](std::string_view line, std::uint64_t, auto& out) {
    const auto found = static_cast<std::uint64_t>(std::ranges::count(line, from));
    count += found;
    edited.assign(line);
    std::ranges::replace(edited, from, to);
    out.append_bytes(edited);
    return found > 0 && from != to;
  });
  say(verbose, zan::counted(count, "character"), " translated\n");
}

void Editor::chg_case_command(const std::string& arg, bool to_upper, bool verbose) {
  begin_undo_unit();
  char (*const change)(char) = to_upper ? zan::to_upper : zan::to_lower;
  std::uint64_t count = 0;
  if (const auto span = active_select_span()) {
    current.transform_span({span->start_row, span->start_col}, {span->end_row, span->end_col}, change);
    count = span->end_row - span->start_row + 1;
    clear_select();
  } else {
    const auto range = range_or_cursor_line(arg, verbose);
    if (!range) return;
    if (range->first <= range->last)
      current.transform_span({range->first, 0}, {range->last, current.line_length(range->last)}, change);
    count = range->last + 1 - std::min(range->first, range->last + 1);
  }
  say(verbose, counted_lines(count), " converted to ", to_upper ? "upper" : "lower", "case\n");
}
