// Sessions in line mode. The input: lines of commands up to an empty one, the text. What would leave the
// program, print, or read or write files beyond the one that is edited is refused.
#include <filesystem>
#include <regex>

#include "fuzz/editor_state.h"
#include "tests/files/scratch_directory.h"

namespace {

// Looked for everywhere, since a macro may spell a command; short ones as whole words, or half of all inputs
// would be refused. Large numbers only take long.
bool is_refused(const std::string& input) {
  static const std::regex kRefused(
      "EXIT|QUIT|PRINT|WRITE|TERMINAL|COMMAND|INCLUDE|SET HELP|[0-9]{5}|(^|[^A-Z])(EX|Q)(?![A-Z])",
      std::regex::icase);
  return std::regex_search(input, kRefused);
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
  const std::string whole(reinterpret_cast<const char*>(data), size);
  if (!ready || size > 1500 || is_refused(whole)) return 0;
  zan::fuzz::Input input(data, size);
  const std::vector<std::string> commands = input.lines();
  for (const std::string& name : scratch.names()) std::filesystem::remove(scratch / name);
  zan::fuzz::TestEditor editor(input.rest(), scratch / "text");
  for (const std::string& command : commands) {
    if (macro_is_refused(editor)) return 0;
    zan::fuzz::check_step(editor, [&] { editor.execute_command(command, true); });
  }
  return 0;
}
