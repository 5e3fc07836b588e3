#pragma once

struct EditorState;

namespace zan {

// Writes the text of each modified buffer but PASTE and macros, as plain lines, to a file of its own beside
// the journal, or else in the home directory; files/rescue_copy.h has the names. Says nothing and never
// throws: what cannot be rescued is lost.
void rescue(const EditorState& editor) noexcept;

// If a signal asks the program to end: gives the terminal back, rescues the text and ends the program by that
// signal. An interrupt ends it without a rescue, as at the prompt.
void end_if_asked(const EditorState& editor);

} // namespace zan
