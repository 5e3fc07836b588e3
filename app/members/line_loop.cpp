#include "app/editor.h"

#include <cstdlib>

#include "app/members/rescue.h"
#include "files/stat.h"
#include "host/signals.h"
#include "host/stack.h"
#include "screen/terminal.h"
#include "text/bytes.h"
#include "text/load_file.h"

int Editor::run() {
  input_found = load_main_text(current, input_file);
  zan::answer_ending_signals(); // only now: before, there is nothing to rescue
  main_on_disk = current.lines();
  buffers.entry("MAIN") = current;
  buffers.entry("PASTE") = TextBuffer();
  current_buffer_name = "MAIN";
  begin_recovery();
  load_startup_file();
  buffers_found = buffers;
  if (recover) try_recover_journal();
  if (command_file) run_command_file(*command_file, true);
  return line_mode();
}

int Editor::line_mode() {
  if (!quiet) {
    say(true, "$ EDIT/ZAN ", input_file, "\n");
    if (!input_found && fnf) {
      say(true, "Input file does not exist\n", text_end, "\n");
    } else {
      type_current_line();
    }
  }
  for (;;) {
    console.write(prompt);
    sync_journal();
    const auto line = console.read_line();
    zan::end_if_asked(*this);
    if (!line) break;
    append_journal_line(*line);
    handle_command_result(execute_command(*line, !quiet), true);
  }
  if (console.reads_terminal()) zan::say_where_rescued(zan::rescue(*this), "\n");
  console.flush();
  return 0;
}

Editor::CommandResult Editor::execute_command(const std::string& line, bool verbose) {
  zan::end_if_asked(*this);
  if (is_comment_or_blank(line)) return CommandResult::Continue;
  std::string text = trim(line);
  const Qualifiers quals = extract_qualifiers(text);
  const CommandResult result = dispatch_command(text, quals, verbose);
  if (quals.save && result == CommandResult::Continue) do_save(verbose);
  return result;
}

void Editor::handle_command_result(CommandResult result, bool allow_exit) {
  switch (result) {
  case CommandResult::Continue:
  case CommandResult::Error:
    return;
  case CommandResult::EnterScreen:
    screen_mode();
    return;
  case CommandResult::Exit:
    if (allow_exit) save_and_exit_now();
    return;
  case CommandResult::Quit:
    if (allow_exit) quit_without_saving_now();
    return;
  }
}

void Editor::run_command_file(const std::string& path, bool verbose) {
  // The file is read whole first: it may run itself, or be the journal that its own lines are appended to. A
  // file nested too deep is refused like one that cannot be opened.
  std::optional<std::string> content;
  if (nesting_depth < zan::nesting_limit()) {
    const AbortGuard guard;
    content = zan::read_whole_file(path, g_zan_abort_requested);
    if (check_abort(verbose)) {
      nest_aborted = nesting_depth > 0;
      return;
    }
  }
  if (!content) {
    if (verbose) console.write_error("?Unable to open command file " + path + "\n");
    else report(verbose, "?Unable to open command file ", path);
    return;
  }
  ++nesting_depth;
  run_command_lines(*content, verbose);
  leave_nest();
}

void Editor::leave_nest() {
  if (--nesting_depth == 0) nest_aborted = false;
}

void Editor::run_command_lines(std::string_view content, bool verbose) {
  while (!content.empty() && !nest_aborted) {
    const std::size_t end = content.find('\n');
    std::string_view line = content.substr(0, end);
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    const CommandResult result = execute_command(std::string(line), verbose);
    if (result == CommandResult::EnterScreen || verbose) handle_command_result(result, true);
  }
}

bool Editor::is_comment_or_blank(std::string_view line) {
  const std::string_view text = zan::trim(line);
  return text.empty() || text.front() == '!' || text.front() == '#' || text.front() == ';';
}

std::optional<std::string> Editor::find_startup_file() const {
  if (const char* named = std::getenv("ZAN_INI"); named != nullptr && file_exists(named)) return named;
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return std::nullopt;
  for (const char* name : {"ZAN.INI", "zan.ini"})
    if (std::string path = join_path(home, name); file_exists(path)) return path;
  return std::nullopt;
}

void Editor::load_startup_file() {
  if (const auto path = find_startup_file()) run_command_file(*path, false);
}

std::string Editor::join_path(const std::string& dir, const std::string& name) {
  if (dir.empty()) return name;
  return dir.ends_with('/') ? dir + name : dir + "/" + name;
}

bool Editor::file_exists(const std::string& path) { return zan::file_exists(path); }

zan::TypedLine Editor::read_text_line(std::string_view text_prompt, bool verbose,
                                      std::string_view how_to_end) {
  if (g_curses_active) {
    const std::string opening = how_to_end.empty() ? "" : std::string(how_to_end) + " _";
    return zan::read_screen_line(*this, "_", opening);
  }
  say(verbose, text_prompt);
  return {console.read_line()};
}
