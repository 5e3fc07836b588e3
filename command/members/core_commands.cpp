#include "app/editor.h"

#include <algorithm>
#include <ctime>

#include "screen/terminal.h"
#include "text/bytes.h"

namespace {

constexpr char kCtrlZ = 26;

bool ends_insert(std::string_view line) {
  if (line == "^Z" || line == ".") return true;
  return line.find(kCtrlZ) != std::string_view::npos &&
         line.find_first_not_of(std::string_view(" \t\x1a", 3)) == std::string_view::npos;
}

// Prints numbered lines part by part, because a line may be longer than memory has room for.
class LinePrinter {
 public:
  LinePrinter(const Editor& editor, std::uint64_t row, bool brief, int width)
      : editor_(editor), row_(row), limit_(brief ? static_cast<std::size_t>(width) : std::string_view::npos) {
  }

  void part(std::string_view text) {
    begin_line();
    for (; room_ > 0 && !text.empty(); text.remove_prefix(std::min(text.size(), kPart))) {
      std::string_view shown = text.substr(0, kPart);
      std::string expanded;
      if (shown.find('\f') != std::string_view::npos)
        shown = expanded = editor_.expand_formfeed_display(std::string(shown));
      shown = shown.substr(0, room_);
      room_ -= shown.size();
      editor_.console.write(shown);
    }
  }
  void end_line() {
    begin_line();
    editor_.console.write("\n");
    begun_ = false;
    ++row_;
  }

 private:
  static constexpr std::size_t kPart = 32 * 1024;

  void begin_line() {
    if (begun_) return;
    begun_ = true;
    room_ = limit_;
    editor_.console.write(std::to_string(row_ + 1));
    editor_.console.write(" ");
  }

  const Editor& editor_;
  std::uint64_t row_;
  std::size_t limit_; // bytes shown of a line
  std::size_t room_ = 0;
  bool begun_ = false;
};

// Types lines first to last, which exist. False when Ctrl/C has stopped it.
bool type_lines(const Editor& editor, std::uint64_t first, std::uint64_t last, bool brief, int width) {
  const zan::LineStore& text = editor.current.lines();
  LinePrinter printer(editor, first, brief, width);
  zan::PieceWalker walker(text, text.line_start(first), text.line_end(last));
  for (zan::Chunk chunk; walker.next(chunk);) {
    while (!chunk.bytes.empty()) {
      if (g_zan_abort_requested != 0) return false;
      const std::size_t length = chunk.literal ? std::string_view::npos : chunk.bytes.find('\n');
      printer.part(chunk.bytes.substr(0, length));
      if (length == std::string_view::npos) break;
      printer.end_line();
      chunk.bytes.remove_prefix(length + 1);
    }
  }
  if (g_zan_abort_requested == 0) printer.end_line();
  return g_zan_abort_requested == 0;
}

} // namespace

// ---- going to a line, typing lines

Editor::CommandResult Editor::goto_line(const std::string& arg, bool verbose) {
  const auto number = zan::parse_digits(arg);
  if (!number) {
    report(verbose, "?Invalid line number: ", arg);
    return CommandResult::Error;
  }
  if (*number > 0) {
    cursor_row = std::min(*number, current.line_count()) - 1;
    cursor_col = current.line_length(cursor_row);
  }
  if (verbose) type_current_line();
  return CommandResult::Continue;
}

void Editor::type_current_line(bool brief, int width) const {
  if (cursor_row >= current.line_count()) {
    say(true, text_end, "\n");
    return;
  }
  type_lines(*this, cursor_row, cursor_row, brief, width);
}

void Editor::type_range(const LineRange& range, bool brief, int width) const {
  const std::uint64_t last_row = current.line_count() - 1;
  const std::uint64_t last = std::min(range.last, last_row);
  if (!type_lines(*this, std::min(range.first, last_row), last, brief, width)) return;
  if (last == last_row) say(true, text_end, "\n");
}

void Editor::type_command(const ParsedCommand& command, bool verbose) {
  if (!verbose && !row_error) return;
  const AbortGuard guard;
  const bool brief = command.quals.brief;
  const int width = command.quals.brief_width;
  const bool named = !zan::trim(command.arg).empty();
  const auto range = named ? named_range(command.arg, verbose) : sticky_range;
  if (named && !range) return;
  if (verbose && range) {
    type_range(*range, brief, width);
  } else if (verbose) {
    type_current_line(brief, width);
  }
  check_abort(verbose);
}

// ---- deleting and inserting

Editor::CommandResult Editor::delete_command(const std::string& arg, bool verbose) {
  LineRange range = sticky_range.value_or(LineRange{cursor_row, cursor_row});
  if (!zan::trim(arg).empty()) {
    const auto named = named_range(arg, verbose);
    if (!named) return CommandResult::Error;
    range = *named;
  }
  delete_range(range);
  return CommandResult::Continue;
}

void Editor::delete_range(const LineRange& range) {
  deleted_line = current.delete_range(range.first, range.last);
  cursor_row = std::min(range.first, current.line_count() - 1);
  cursor_col = 0;
  status_message = "Range deleted";
}

Editor::CommandResult Editor::insert_command(const std::string& arg, bool verbose) {
  const std::string text = strip_optional_quotes(arg);
  if (text.empty() && zan::trim(arg).empty()) return insert_multiline(verbose);
  begin_undo_unit();
  paste_text(Text::from_text(text));
  return CommandResult::Continue;
}

Editor::CommandResult Editor::insert_multiline(bool verbose) {
  zan::LineStoreBuilder collected;
  std::size_t count = 0;
  const auto so_far = [&] {
    zan::LineStoreBuilder copy = collected;
    return copy.finish();
  };
  const TypingGuard guard(*this, {"", so_far, [&] { return count; }});
  auto typed = read_text_line("", verbose, "Enter text. End with Ctrl/Z.");
  for (; typed.text; typed = read_text_line("_", verbose)) {
    std::string& line = *typed.text;
    if (line.ends_with('\r')) line.pop_back();
    if (ends_insert(line)) break;
    if (count++ > 0) collected.append_break();
    collected.append_bytes(line);
  }
  if (typed.cancelled) {
    cancel_lines();
    return CommandResult::Error;
  }
  begin_undo_unit();
  paste_text(collected.finish());
  status_message = "Inserted";
  return CommandResult::Continue;
}

// Ctrl/C has cancelled the lines that a command asked for, and with them the macros that run it.
void Editor::cancel_lines() {
  status_message = "Abort";
  nest_aborted = nesting_depth > 0;
}

// ---- searching

void Editor::find_command(const ParsedCommand& command, bool verbose) {
  const AbortGuard guard;
  const std::string target = trim(command.arg);
  if (target.starts_with('=')) {
    find_buffer(std::string_view(target).substr(1), verbose);
    return;
  }
  if (std::string text = strip_optional_quotes(target); !text.empty()) search_string = std::move(text);
  find_next(direction);
  if (check_abort(verbose) || !verbose) return;
  if (!command.quals.brief) {
    type_current_line();
    return;
  }
  say(true, std::to_string(cursor_row + 1));
  if (status_message.starts_with("Found:")) say(true, " ", search_string);
  say(true, "\n");
}

void Editor::find_next_command(bool verbose) {
  const AbortGuard guard;
  find_next(direction);
  if (!check_abort(verbose) && verbose) type_current_line();
}

void Editor::find_next(Direction way) {
  if (search_string.empty()) {
    status_message = "No search string";
    return;
  }
  std::optional<zan::Position> found;
  if (way == Direction::Advance) {
    found = search_forward(cursor_row, cursor_col + 1);
    if (!found) found = search_forward(0, 0);
  } else {
    const std::uint64_t last = current.line_count() - 1;
    found = search_backward(cursor_row, cursor_col);
    if (!found) found = search_backward(last, current.line_length(last));
  }
  if (!found) {
    status_message = g_zan_abort_requested != 0 ? "Abort" : "String not found: " + search_string;
    return;
  }
  cursor_row = found->row;
  cursor_col = found->col;
  match_length = current.match_len_at(search_string, cursor_row, cursor_col, search_exact);
  status_message = "Found: " + search_string;
}

// ---- top, bottom, direction, bell, date, files

void Editor::go_top() {
  cursor_row = 0;
  cursor_col = 0;
  status_message = "TOP";
}

void Editor::go_bottom() {
  cursor_row = current.line_count() - 1;
  cursor_col = current.line_length(cursor_row);
  status_message = "BOTTOM";
}

void Editor::set_direction(Direction way, bool verbose) {
  direction = way;
  status_message = way == Direction::Advance ? "Direction: ADVANCE" : "Direction: BACKUP";
  say(verbose, status_message, "\n");
}

void Editor::ring_bell() {
  const bool by_screen = zan::screen_was_started();
  if (!by_screen) console.write("\a");
  console.flush();
  if (!by_screen) return;
  zan::screen_beep();
  zan::screen_flash();
}

void Editor::date_command(bool verbose) {
  paste_text(Text::from_text(current_date_string()));
  if (verbose) type_current_line();
}

std::string Editor::current_date_string() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[64] = "";
  return {text, std::strftime(text, sizeof text, "%d-%b-%Y %H:%M:%S", &local)};
}

void Editor::show_files(bool verbose) {
  if (!verbose) return;
  say(true, "Input File: ", input_file, "\nOutput File: ", output_file.value_or(input_file), "\n");
  if (files.empty()) return;
  say(true, "Files:");
  for (std::size_t i = 0; i < files.size(); ++i) say(true, i == file_index ? " *" : " ", files[i]);
  say(true, "\n");
}

// ---- ranges

std::optional<Editor::LineRange> Editor::named_range(std::string_view text, bool verbose,
                                                     const TextBuffer* other) {
  const auto range =
      other == nullptr ? parse_line_range(text) : zan::parse_number_range(text, other->line_count());
  if (!range) report(verbose, "?Invalid range: ", text);
  return range;
}

std::optional<Editor::LineRange> Editor::range_or_cursor_line(const std::string& arg, bool verbose) {
  LineRange range{cursor_row, cursor_row};
  if (!zan::trim(arg).empty()) {
    const auto named = named_range(arg, verbose);
    if (!named) return std::nullopt;
    range = *named;
  }
  range.last = std::min(range.last, current.line_count() - 1);
  return range;
}

void Editor::range_command(const std::string& arg, bool verbose) {
  const std::string text = trim(arg);
  if (text.empty() && !sticky_range) {
    say(verbose, "Range: (none)\n");
    return;
  }
  if (!text.empty()) {
    const auto range = named_range(text, verbose);
    if (!range) return;
    sticky_range = range;
  }
  say(verbose, "Range: ", std::to_string(sticky_range->first + 1), " THRU ",
      std::to_string(sticky_range->last + 1), "\n");
}
