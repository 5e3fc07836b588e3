#pragma once

#include <optional>
#include <string>
#include <string_view>

class Editor;

namespace zan {

struct TypedLine {
  std::optional<std::string> text; // nothing: the input has ended or the prompt was cancelled
  bool cancelled = false;          // by Ctrl/C on the screen
};

// Reads one line, at most 511 bytes, at a prompt on the lowest row of the screen. On a terminal a Ctrl/Z at
// its start ends it. `opening`, if there is one, replaces the prompt while the answer is empty.
TypedLine read_screen_line(Editor& editor, std::string_view prompt, std::string_view opening = "");

} // namespace zan
