#pragma once

#include <optional>
#include <string>
#include <string_view>

class Editor;

namespace zan {

// One line typed at the prompt on the lowest row of the screen, at most 511 bytes. Nothing when Ctrl/C was
// typed or no more input comes.
std::optional<std::string> read_screen_line(Editor& editor, std::string_view prompt);

} // namespace zan
