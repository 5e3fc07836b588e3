#include "app/editor.h"

#include <utility>

Editor::CommandResult Editor::next_file_command(bool verbose) {
  if (file_index + 1 >= files.size()) {
    report(verbose, "?No more files");
    return CommandResult::Continue;
  }
  return change_file(file_index + 1, verbose);
}

Editor::CommandResult Editor::previous_file_command(bool verbose) {
  if (file_index == 0) {
    report(verbose, "?Already at first file");
    return CommandResult::Continue;
  }
  return change_file(file_index - 1, verbose);
}

// Saves MAIN to its file and loads another file of the list into it. If the save fails, nothing else happens.
Editor::CommandResult Editor::change_file(std::size_t index, bool verbose) {
  const AbortGuard guard;
  save_current_buffer_state();
  TextBuffer& main = named_buffer("MAIN");
  std::string path = resolve_write_path(main.filename());
  if (!save_to_own_file(main, path)) {
    if (unsaved_copy.empty() && check_abort(verbose)) return CommandResult::Continue;
    status_message = "?Unable to write " + path;
    report_failed_save(status_message, verbose);
    return CommandResult::Error;
  }
  TextBuffer loaded;
  const bool found = load_main_text(loaded, files[index]);
  if (check_abort(verbose)) {
    live_buffer("MAIN").clear_modified(); // it has been saved
    return CommandResult::Continue;
  }
  file_index = index;
  input_file = files[index];
  input_found = found;
  current = std::move(loaded);
  main_on_disk = current.lines();
  begin_recovery();
  buffers.entry("MAIN") = current;
  current_buffer_name = "MAIN";
  cursor_row = 0;
  cursor_col = 0;
  top_row = 0;
  left_col = 0;
  clear_select();
  search_string.clear();
  say(verbose, input_file, "\n");
  if (verbose) type_current_line();
  return CommandResult::Continue;
}

bool Editor::load_main_text(TextBuffer& main, const std::string& path) {
  const bool found = main.load(path, g_zan_abort_requested);
  main.set_origin(file_history.loaded(main.origin()));
  main.set_filename(path);
  return found;
}
