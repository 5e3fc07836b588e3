#pragma once

#include <fcntl.h>
#include <map>
#include <string>
#include <unistd.h>

#include "app/editor.h"
#include "fuzz/input.h"

namespace zan::fuzz {

// An editor on a text, as it is after start-up, without a file.
class TestEditor : public Editor {
 public:
  explicit TestEditor(std::string_view text, std::string file = "")
      : Editor({file}, std::nullopt, std::nullopt, false, false, "/dev/null") {
    current.set_text(text);
    current.set_filename(std::move(file));
    buffers.entry("MAIN") = current;
    buffers.entry("PASTE") = TextBuffer();
  }
};

// Nobody sees what is printed, nobody answers.
inline void close_standard_streams() {
  const int nowhere = ::open("/dev/null", O_RDWR);
  ::dup2(nowhere, STDIN_FILENO);
  ::dup2(nowhere, STDOUT_FILENO);
  ::close(nowhere);
}

inline std::map<std::string, LineStore> texts_of(Editor& editor) {
  editor.save_current_buffer_state();
  std::map<std::string, LineStore> texts;
  for (const auto& [name, buffer] : editor.buffers.entries()) texts.emplace(name, buffer.lines());
  return texts;
}

inline void check_cursor(const Editor& editor) {
  check(editor.cursor_row < editor.current.line_count());
  check(editor.cursor_col <= editor.current.line_length(editor.cursor_row));
}

// The UNDOs for the snapshots that a step has made, and as many REDOs, lead back to where they began; in
// between stands the text before the step, where that is given. `depth` is the history's from before it.
inline void check_undo(Editor& editor, std::size_t depth,
                       const std::map<std::string, LineStore>* before = nullptr) {
  constexpr std::size_t kHistory = 100;
  if (editor.undo_stack.size() >= kHistory || editor.undo_stack.size() <= depth) return;
  const std::size_t units = editor.undo_stack.size() - depth;
  const std::size_t redoable = editor.redo_stack.size();
  const auto after = texts_of(editor);
  const std::string name = editor.current_buffer_name;
  for (std::size_t i = 0; i < units; ++i) check(editor.undo_last(false));
  if (before != nullptr) check(texts_of(editor) == *before);
  for (std::size_t i = 0; i < units; ++i) check(editor.redo_last(false));
  check(texts_of(editor) == after && editor.current_buffer_name == name);
  check(editor.redo_stack.size() == redoable);
}

// A step of an editor, and what holds after every one.
template <typename Step> void check_step(Editor& editor, Step step) {
  const std::size_t depth = editor.undo_stack.size();
  step();
  editor.clamp_cursor();
  check_cursor(editor);
  check_undo(editor, depth);
}

} // namespace zan::fuzz
