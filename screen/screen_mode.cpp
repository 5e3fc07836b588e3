#include "app/editor.h"

// Until the screen can be started, nothing enters it.
void Editor::screen_mode() {}

void Editor::nokeypad_mode() {}

std::string Editor::prompt_line(const std::string&) { return ""; }

std::string Editor::key_id_from_input(int, bool) const { return ""; }
