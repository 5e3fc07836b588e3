#pragma once

#include <optional>
#include <string>
#include <string_view>

class Editor;

namespace zan {

struct TypedLine {
  std::optional<std::string> text; // nothing: no more input comes, or
  bool cancelled = false;          // Ctrl/C was typed on the screen
};

// One line typed at the prompt on the lowest row of the screen, at most 511 bytes. On a terminal a Ctrl/Z
// that begins it is all of it. `opening`, if there is one, stands in the prompt's place while the answer is
// empty.
TypedLine read_screen_line(Editor& editor, std::string_view prompt, std::string_view opening = "");

} // namespace zan
