#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/line_store.h"

struct EditorState;

namespace zan {

// A copy of one text of the editor. Its path, or nothing when none can be made.
std::optional<std::string> write_copy(const EditorState& editor, std::string_view buffer,
                                      const LineStore& text);

// Writes the text of each buffer, as plain lines, to a file of its own beside the edited file, or else beside
// the journal, at home, in $TMPDIR or /tmp; files/rescue_copy.h has the names. Skips MAIN when its file holds
// that text, macros as they were defined, and other buffers when they are empty. Returns the paths of the
// copies. Prints nothing and never throws. Unless a copy could not be written, the session's file is removed
// then, so that nothing comes back twice.
std::vector<std::string> rescue(EditorState& editor) noexcept;

// If there are copies and standard error is a terminal, prints `before` and one line that names them. Only
// for the end of the program, because it limits all waits: a terminal that nobody reads must not block it.
void say_where_rescued(const std::vector<std::string>& copies, std::string_view before) noexcept;

// If a signal asks the program to end: rescues the text, restores the terminal and ends the program by that
// signal, within a second after the rescue.
void end_if_asked(EditorState& editor);

} // namespace zan
