#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "app/command_line.h"
#include "app/editor.h"
#include "app/members/rescue.h"
#include "app/usage.h"
#include "host/signals.h"
#include "host/stack.h"
#include "screen/terminal.h"

namespace {

// The next file that is opened would get the number of a closed standard stream, and messages would be
// written to it.
void fill_closed_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(stream, F_GETFD) < 0) static_cast<void>(::open("/dev/null", O_RDWR));
}

bool environment_turns_on(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

// `editor` is constructed in place, so that main can rescue its text after a throw.
int run_program(int argc, char** argv, std::optional<Editor>& editor) {
  const char* program = argc > 0 ? argv[0] : nullptr;
  if (argc < 2) {
    print_usage(program);
    return 1;
  }
  const char* term = std::getenv("TERM");
  if (term != nullptr && std::string_view(term) == "dumb") {
    zan::write_fully(STDERR_FILENO, "TERM cannot be 'dumb'\n");
    return 1;
  }
  redirect_tty();
  const zan::CommandLine line = zan::parse_command_line({argv + 1, argv + argc});
  zan::write_fully(STDERR_FILENO, line.messages);
  if (line.help || line.files.empty()) {
    print_usage(program);
    return line.help ? 0 : 1;
  }
  editor.emplace(line.files, line.command, line.output, line.read_only,
                 line.recover || environment_turns_on("ZAN_RECOVER"), line.journal);
  editor->set_debug_keys(line.debug_keys);
  const int status = editor->run();
  zan_safe_endwin();
  zan::end_by_pending_signal();
  return status;
}

} // namespace

int main(int argc, char** argv) {
  fill_closed_streams();
  zan::raise_stack_limit();
  zan::install_signal_handlers();
  std::optional<Editor> editor;
  try {
    return run_program(argc, argv, editor);
  } catch (const std::exception& error) {
    if (editor) zan::end_if_asked(*editor);
    const auto copies = editor ? zan::rescue(*editor) : std::vector<std::string>();
    zan_safe_endwin();
    if (editor) editor->console.flush();
    // Part by part: there may be no memory left to join them.
    for (const char* part : {"fatal: ", error.what(), "\n"}) zan::write_fully(STDERR_FILENO, part);
    zan::say_where_rescued(copies, "");
    zan::end_by_pending_signal();
    return 1;
  }
}
