#pragma once

#include <string>
#include <string_view>
#include <vector>

struct EditorState;

namespace zan {

// Writes the text of each buffer, as plain lines, to a file of its own beside the edited file, or else beside
// the journal, at home, in $TMPDIR or /tmp; files/rescue_copy.h has the names. Skips MAIN when its file holds
// that text, macros as they were defined, and other buffers when they are empty. Returns the paths of the
// copies. Prints nothing and never throws: what cannot be rescued is lost.
std::vector<std::string> rescue(const EditorState& editor) noexcept;

// If there are copies and standard error is a terminal, prints `before` and one line that names them. Only
// for the end of the program, because it limits all waits: a terminal that nobody reads must not block it.
void say_where_rescued(const std::vector<std::string>& copies, std::string_view before) noexcept;

// If a signal asks the program to end: rescues the text, restores the terminal and ends the program by that
// signal, within a second after the rescue.
void end_if_asked(const EditorState& editor);

} // namespace zan
