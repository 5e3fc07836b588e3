// Sessions in line mode. The input: lines of commands up to an empty one, the text. What would leave the
// program, print, or read or write files beyond the one that is edited is refused.
#include <filesystem>

#include "fuzz/editor_state.h"
#include "tests/files/scratch_directory.h"
#include "text/bytes.h"

namespace {

// Looked for everywhere, since a macro may spell a command.
constexpr std::string_view kRefused[] = {"EXIT",  "EX",       "QUIT",    "Q",       "PRINT",
                                         "WRITE", "TERMINAL", "COMMAND", "INCLUDE", "SET HELP"};

bool holds_word(const std::string& text, std::string_view word) {
  const bool short_form = word.size() <= 2; // a whole word, or half of all inputs would be refused
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    const bool starts = at == 0 || !zan::is_alpha(text[at - 1]);
    const bool ends = at + word.size() >= text.size() || !zan::is_alpha(text[at + word.size()]);
    if (!short_form || (starts && ends)) return true;
  }
  return false;
}

bool is_refused(std::string_view input) {
  const std::string text = zan::upper(input);
  std::size_t digits = 0; // of a number: large ones only take long
  for (const char c : text)
    if (digits = zan::is_digit(c) ? digits + 1 : 0; digits > 4) return true;
  return std::ranges::any_of(kRefused, [&](auto word) { return holds_word(text, word); });
}

// Commands may have put together in a macro what is refused.
bool macro_is_refused(Editor& editor) {
  editor.save_current_buffer_state();
  return std::ranges::any_of(editor.buffers.entries(), [&](const auto& entry) {
    return editor.macros.contains(std::string(entry.name)) && is_refused(entry.buffer.lines().to_string());
  });
}

} // namespace

// What the screen library keeps of a terminal that it could not start.
extern "C" const char* __lsan_default_suppressions() { return "leak:newterm\nleak:new_prescr"; }

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const zan::test::ScratchDirectory scratch;
  static const bool ready = [] {
    zan::fuzz::close_standard_streams();
    ::unsetenv("TERM");
    return true;
  }();
  const std::string_view whole(reinterpret_cast<const char*>(data), size);
  if (!ready || size > 1500 || is_refused(whole)) return 0;
  zan::fuzz::Input input(data, size);
  std::vector<std::string> commands;
  for (std::string line = input.line(); !line.empty(); line = input.line()) commands.push_back(line);
  for (const std::string& name : scratch.names()) std::filesystem::remove(scratch / name);
  zan::fuzz::TestEditor editor(input.rest(), scratch / "text");
  for (const std::string& command : commands) {
    if (macro_is_refused(editor)) return 0;
    const std::size_t depth = editor.undo_stack.size();
    editor.execute_command(command, true);
    editor.clamp_cursor();
    zan::fuzz::check_cursor(editor);
    zan::fuzz::check_undo(editor, depth);
  }
  return 0;
}
