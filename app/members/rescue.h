#pragma once

#include <string>
#include <string_view>
#include <vector>

struct EditorState;

namespace zan {

// Writes the text of each buffer, as plain lines, to a file of its own beside the edited file, or else beside
// the journal, at home, in $TMPDIR or /tmp; files/rescue_copy.h has the names. Left out are a MAIN that is
// what its file holds, macros as they were defined and other buffers that are empty. The paths of the copies
// are returned. Says nothing, touches no terminal and never throws: what cannot be rescued is lost.
std::vector<std::string> rescue(const EditorState& editor) noexcept;

// Where standard error is a terminal, says on one line where the copies are, if there are any; `before` goes
// before it. A terminal that nobody reads does not hold that up. For the end of the program: see limit_waits.
void say_where_rescued(const std::vector<std::string>& copies, std::string_view before) noexcept;

// If a signal asks the program to end: rescues the text, gives the terminal back and ends the program by that
// signal, within a second after the rescue.
void end_if_asked(const EditorState& editor);

} // namespace zan
