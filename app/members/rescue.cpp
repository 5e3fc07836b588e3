#include "app/members/rescue.h"

#include <unistd.h>

#include "app/editor_state.h"
#include "files/rescue_copy.h"
#include "host/signals.h"
#include "screen/terminal.h"

namespace zan {

namespace {

bool differs(const LineStore& a, const LineStore& b) noexcept {
  try {
    return !(a == b);
  } catch (...) { // no memory to compare them
    return true;
  }
}

bool would_be_lost(const EditorState& editor, std::string_view name, const TextBuffer& buffer) {
  if (name == "MAIN") return !editor.main_on_disk || differs(buffer.lines(), *editor.main_on_disk);
  const auto macro = editor.macro_texts.find(name);
  const bool is_definition = macro != editor.macro_texts.end() && !differs(buffer.lines(), macro->second);
  return !buffer.lines().empty() && !is_definition;
}

std::optional<std::string> write_copy(const EditorState& editor, std::string_view name,
                                      const LineStore& text) {
  const std::string copy = rescue_name(editor.input_file, name == "MAIN" ? "" : name);
  const auto directories =
      and_spare_directories({directory_of(editor.input_file), directory_of(editor.journal_path())});
  for (const std::string& directory : directories)
    if (auto path = write_rescue_copy(directory, copy, text)) return path;
  return std::nullopt;
}

} // namespace

std::vector<std::string> rescue(const EditorState& editor) noexcept {
  std::vector<std::string> copies;
  const auto rescue_buffer = [&](std::string_view name, const TextBuffer& buffer) {
    if (!would_be_lost(editor, name, buffer)) return;
    if (auto path = write_copy(editor, name, buffer.lines())) copies.push_back(std::move(*path));
  };
  try {
    // The registry's entry of the current buffer may be stale.
    rescue_buffer(editor.current_buffer_name, editor.current);
    for (const auto& [name, buffer] : editor.buffers.entries())
      if (name != editor.current_buffer_name) rescue_buffer(name, buffer);
  } catch (...) { // no memory, not even for a name
  }
  return copies;
}

void say_where_rescued(const std::vector<std::string>& copies, std::string_view before) noexcept {
  if (copies.empty() || isatty(STDERR_FILENO) == 0) return;
  try {
    std::string line(before);
    for (const std::string& copy : copies)
      line += (&copy == &copies.front() ? "?Your text is in " : ", ") + copy;
    line += '\n';
    limit_waits();
    [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, line.data(), line.size());
  } catch (...) { // no memory
  }
}

void end_if_asked(const EditorState& editor) {
  if (g_zan_pending_signal == 0) return;
  const auto copies = rescue(editor);
  const bool in_line_mode = !g_curses_active; // the cursor may stand behind a prompt
  reconnect_output();
  limit_waits();
  zan_safe_endwin();
  say_where_rescued(copies, in_line_mode ? "\n" : "");
  end_by_pending_signal();
}

} // namespace zan
