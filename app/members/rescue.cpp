#include "app/members/rescue.h"

#include <cstdlib>

#include "app/editor.h"
#include "files/rescue_copy.h"
#include "host/signals.h"
#include "screen/terminal.h"

namespace zan {

namespace {

void rescue_buffer(const EditorState& editor, std::string_view name, const TextBuffer& buffer) {
  if (!buffer.modified() || name == "PASTE" || editor.macros.contains(std::string(name))) return;
  const std::string copy = rescue_name(editor.input_file, name == "MAIN" ? "" : name);
  if (write_rescue_copy(directory_of(editor.journal_path()), copy, buffer.lines())) return;
  const char* home = std::getenv("HOME");
  if (home != nullptr) write_rescue_copy(home, copy, buffer.lines());
}

} // namespace

void rescue(const EditorState& editor) noexcept {
  try {
    // The registry's entry of the current buffer may be stale.
    rescue_buffer(editor, editor.current_buffer_name, editor.current);
    for (const auto& [name, buffer] : editor.buffers.entries())
      if (name != editor.current_buffer_name) rescue_buffer(editor, name, buffer);
  } catch (...) { // no memory, not even for a name
  }
}

void end_if_asked(const EditorState& editor) {
  if (g_zan_pending_signal == 0) return;
  zan_safe_endwin();
  if (g_zan_pending_signal != SIGINT) rescue(editor);
  end_by_pending_signal();
}

} // namespace zan
