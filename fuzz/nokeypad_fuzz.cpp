// Strings of the nokeypad language. The input: a line of letters that choose settings, lines of commands up
// to an empty one, the text.
#include "fuzz/editor_state.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool closed = (zan::fuzz::close_standard_streams(), true);
  if (!closed || size > 2000) return 0;
  zan::fuzz::Input input(data, size);
  zan::fuzz::Input choices = input;
  input.line();
  const std::vector<std::string> commands = input.lines();
  zan::fuzz::TestEditor editor(input.rest());
  editor.search_exact = choices.flag();
  editor.search_word = choices.flag();
  editor.wrap = choices.flag();
  editor.screen_width = static_cast<int>(choices.below(40));
  editor.case_mode = choices.flag() ? "LOWER" : "NONE";
  for (const std::string& command : commands)
    zan::fuzz::check_step(editor, [&] { editor.execute_nokeypad_string(command, false); });
  return 0;
}
