#include <unistd.h>
#include <utility>

#include "app/editor.h"
#include "screen/terminal.h"

Editor::RowReports::RowReports(Editor& editor, bool on)
    : editor_(editor),
      outer_(std::exchange(editor.row_error, on ? std::optional<std::string>("") : std::nullopt)) {}

Editor::RowReports::~RowReports() { editor_.row_error = std::move(outer_); }

void Editor::show_on_row(std::initializer_list<std::string_view> line, bool error) {
  if (!row_error) return;
  std::string text;
  for (const std::string_view part : line) text += part;
  if (error) row_error = text;
  status_message = std::move(text);
}

void Editor::notify(const std::string& line) {
  if (g_curses_active) status_message = line;
  else if (isatty(STDERR_FILENO) != 0) console.write_error(line + "\n");
}

void Editor::run_screen_command(const std::string& line) {
  const RowReports reports(*this, !quiet);
  const CommandResult result = execute_command(line, false);
  nest_aborted = false; // what this visit itself is called from goes on
  // An error in a macro or a command file stays, whatever its later commands report.
  if (row_error && !row_error->empty()) status_message = *row_error;
  handle_command_result(result, true);
}
