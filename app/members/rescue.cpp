#include "app/members/rescue.h"

#include <unistd.h>

#include "app/editor_state.h"
#include "files/rescue_copy.h"
#include "host/signals.h"
#include "screen/terminal.h"
#include "text/bytes.h"

namespace zan {

namespace {

bool differs(const LineStore& a, const LineStore& b) noexcept {
  try {
    return !(a == b);
  } catch (...) { // no memory to compare them
    return true;
  }
}

// Macros are left out as they were defined, but for those that somebody has typed.
bool would_be_lost(const EditorState& editor, std::string_view name, const LineStore& text) {
  if (name == "MAIN") return !editor.main_on_disk || differs(text, *editor.main_on_disk);
  const auto macro = editor.macro_texts.find(name);
  const bool is_definition = macro != editor.macro_texts.end() && !differs(text, macro->second);
  const TextBuffer* found = editor.buffers_found.find(name);
  const bool is_typed =
      editor.console.reads_terminal() && (found == nullptr || differs(text, found->lines()));
  return !text.empty() && (is_typed || !is_definition);
}

} // namespace

std::optional<std::string> write_copy(const EditorState& editor, std::string_view name,
                                      const LineStore& text) {
  const std::string copy = rescue_name(editor.input_file, name == "MAIN" ? "" : name);
  const auto directories =
      and_spare_directories({directory_of(editor.input_file), directory_of(editor.journal_path())});
  for (const std::string& directory : directories)
    if (auto path = write_rescue_copy(directory, copy, text)) return path;
  return std::nullopt;
}

std::vector<std::string> rescue(EditorState& editor) noexcept {
  std::vector<std::string> copies;
  bool complete = true;
  const auto rescue_text = [&](std::string_view name, const LineStore& text) {
    if (!would_be_lost(editor, name, text)) return;
    auto path = write_copy(editor, name, text);
    complete = complete && path;
    if (path) copies.push_back(std::move(*path));
  };
  try {
    // The registry's entry of the current buffer may be stale.
    rescue_text(editor.current_buffer_name, editor.with_typed_lines());
    for (const auto& [name, buffer] : editor.buffers.entries())
      if (name != editor.current_buffer_name) rescue_text(name, buffer.lines());
    if (editor.typing && !editor.typing->macro.empty())
      rescue_text(editor.typing->macro, editor.typing->so_far());
    if (complete) editor.session_log.remove();
  } catch (...) { // no memory, not even for a name
  }
  return copies;
}

void say_where_rescued(const std::vector<std::string>& copies, std::string_view before) noexcept {
  if (copies.empty() || isatty(STDERR_FILENO) == 0) return;
  try {
    const std::string line = std::string(before) + "?Your text is in " + joined(copies, ", ") + "\n";
    limit_waits();
    [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, line.data(), line.size());
  } catch (...) { // no memory
  }
}

void end_if_asked(EditorState& editor) {
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
