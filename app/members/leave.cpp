#include "app/editor.h"

#include <algorithm>
#include <cstdlib>
#include <unistd.h>

#include "app/members/rescue.h"
#include "host/signals.h"
#include "screen/terminal.h"

namespace {

// Ends the process, by the pending signal if there is one. exit destroys no automatic object, so the console
// is flushed here.
[[noreturn]] void leave(zan::Console& console, int status) {
  zan::end_by_pending_signal();
  console.flush();
  console.release_input();
  std::exit(status);
}

} // namespace

void Editor::save_and_exit_now() {
  zan::end_if_asked(*this);
  zan_safe_endwin();
  TextBuffer& main = live_buffer("MAIN");
  if (output_file) main.set_filename(*output_file);
  std::string path = resolve_write_path(main.filename());
  const bool named = output_file && !stands_for_unread_file(main, path);
  if (!(named ? save_buffer_to_path(main, path, false) : save_to_own_file(main, path))) {
    zan::end_if_asked(*this);
    const auto copies = zan::rescue(*this);
    console.write_error("?Unable to write " + path + "\n");
    report_unsaved_copy();
    zan::say_where_rescued(copies, "");
    leave(console, 2);
  }
  delete_journal_file();
  end_recovery();
  zan::end_if_asked(*this);
  say(summary, path, " ", std::to_string(main.line_count()), " lines\n");
  leave(console, 0);
}

void Editor::quit_without_saving_now() {
  zan::end_if_asked(*this);
  zan_safe_endwin();
  save_current_buffer_state();
  const bool changed =
      std::ranges::any_of(buffers.entries(), [](const auto& entry) { return entry.buffer.modified(); });
  end_recovery();
  say(changed, "Changes discarded\n");
  leave(console, 0);
}

void Editor::do_save(bool verbose) {
  std::string path = resolve_write_path(current.filename());
  if (save_to_own_file(current, path)) {
    tell(verbose, "[Saved ", last_written_path, "]");
  } else {
    report_failed_save("?Unable to save " + current.filename(), verbose);
  }
}

void Editor::report_kept_text(const std::string& path, const std::string& copy) {
  if (copy.empty()) return;
  const std::string line = "?" + path + " was changed by another program; its text is in " + copy;
  if (g_curses_active) status_message = line;
  if (row_error) row_error = line;
  if (!g_curses_active || ::isatty(STDERR_FILENO) == 0) console.write_error(line + "\n");
}

// The row has one line for all of it.
void Editor::report_failed_save(const std::string& error, bool verbose) {
  say(verbose, error, "\n");
  std::string line = error;
  if (!unsaved_copy.empty()) line += "; new text in " + unsaved_copy;
  if (!kept_copy.empty()) line += "; another program's text in " + kept_copy;
  if (!verbose) show_on_row({line}, true);
  if (g_curses_active && line != error) status_message = line; // where commands are silent as well
  report_unsaved_copy();
  unsaved_copy.clear();
  kept_copy.clear();
}

void Editor::report_unsaved_copy() {
  if (!unsaved_copy.empty() && !g_curses_active) notify("?The new text is in " + unsaved_copy);
}
