#include "app/editor.h"

#include "text/bytes.h"
#include "text/load_file.h"

void Editor::copy_move_command(const std::string& arg, bool move, bool verbose) {
  const auto sides = zan::cut_at(arg, " TO ");
  if (!sides) {
    report(verbose, "?Syntax: ", move ? "MOVE" : "COPY", " range TO =buffer");
    return;
  }
  const auto range = named_range(zan::trim(sides->before), verbose);
  if (!range) return;
  const std::string name = normalize_buffer_name(sides->after);
  if (name.empty()) {
    report(verbose, "?Missing destination buffer");
    return;
  }
  const auto lines = current.lines_in_range(range->first, range->last);
  TextBuffer& destination = live_buffer(name);
  if (lines) destination.append_lines(*lines);
  // The copies stand behind the range, so its line numbers still hold.
  if (move) delete_range(*range);
  say(verbose, zan::counted(lines ? lines->line_count() : 0, "line"), move ? " moved" : " copied",
      " to =", name, "\n");
}

void Editor::clear_buffer_command(const std::string& arg, bool verbose) {
  std::string name = normalize_buffer_name(arg);
  if (name.empty()) name = current_buffer_name;
  if (name == "MAIN" || name == "PASTE") {
    live_buffer(name).clear();
    if (name == current_buffer_name) {
      cursor_row = 0;
      cursor_col = 0;
      top_row = 0;
    }
    say(verbose, "Buffer ", name, " cleared\n");
    return;
  }
  if (name == current_buffer_name) find_buffer("MAIN", false);
  buffers.erase(name);
  macros.erase(name);
  macro_texts.erase(name);
  say(verbose, "Buffer ", name, " deleted\n");
}

void Editor::include_file_command(const std::string& arg, bool verbose) {
  const std::string path = strip_optional_quotes(zan::trim(arg));
  const AbortGuard guard;
  zan::FileState state;
  const auto loaded = zan::load_file(path, &state, g_zan_abort_requested);
  if (check_abort(verbose)) return;
  if (!loaded) {
    report(verbose, "?Unable to open include file ", path);
    return;
  }
  note_recovery_base(path, state, loaded->lines);
  const std::uint64_t count = loaded->line_count();
  if (count > 0) current.insert_lines(cursor_row, loaded->lines);
  say(verbose, std::to_string(count), " lines included\n");
}

void Editor::retain_command(const std::string& arg, bool verbose) {
  const std::string target = trim(arg);
  if (target.empty()) {
    report(verbose, "?RETAIN / STORE TEXT requires =buffer");
    return;
  }
  const std::string name = normalize_buffer_name(target);
  if (name.empty()) {
    report(verbose, "?Missing destination buffer");
    return;
  }
  LineRange range = sticky_range.value_or(LineRange{cursor_row, cursor_row});
  if (const auto span = active_select_span()) {
    range = {span->start_row, span->end_row};
    clear_select();
  }
  const auto lines = current.lines_in_range(range.first, range.last);
  TextBuffer& buffer = live_buffer(name);
  buffer.clear();
  if (lines) buffer.append_lines(*lines);
  say(verbose, zan::counted(lines ? lines->line_count() : 0, "line"), " retained in =", name, "\n");
}
