#include "app/command_line.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "host/console.h"
#include "text/bytes.h"

namespace zan {

namespace {

constexpr auto kOptions = std::to_array<Option>({
    {{"-command"}, "file", "Replay line-mode commands from file after ZAN.INI", &CommandLine::command},
    {{"-command="}, "file", "Same as -command file", &CommandLine::command},
    {{"-output=", "/OUTPUT="}, "file", "Write MAIN to file on EXIT (/OUTPUT=file)", &CommandLine::output},
    {{"-readonly", "/READ_ONLY", "/READONLY"},
     "",
     "Disallow mutating commands (/READ_ONLY)",
     &CommandLine::read_only},
    {{"-recover", "/RECOVER"}, "", "Replay journal if present (/RECOVER)", &CommandLine::recover},
    {{"-journal=", "/JOURNAL="},
     "path",
     "Journal file path (/JOURNAL=path); host text journal",
     &CommandLine::journal},
    {{"-d", "-k", "/DEBUG", "/DEBUG_KEYS"},
     "",
     "Debug: show last key's name + code on the status line",
     &CommandLine::debug_keys},
    {{"-h", "--help", "/?"}, "", "", &CommandLine::help},
});

// Parses arguments[at] as an option, and the argument after it when that is the value. False when it is no
// option.
bool take_option(CommandLine& line, const std::vector<std::string>& arguments, std::size_t& at) {
  const std::string& argument = arguments[at];
  const std::string typed = argument.starts_with('/') ? upper(argument) : argument;
  for (const Option& option : kOptions) {
    for (const std::string_view spelling : option.spellings) {
      const bool holds_value = spelling.ends_with('=');
      if (spelling.empty() || !(holds_value ? typed.starts_with(spelling) : typed == spelling)) continue;
      if (const auto* flag = std::get_if<OptionFlag>(&option.field)) line.*(*flag) = true;
      else if (holds_value) line.*std::get<OptionValue>(option.field) = argument.substr(spelling.size());
      else if (at + 1 < arguments.size()) line.*std::get<OptionValue>(option.field) = arguments[++at];
      else line.messages += "?Missing file after " + argument + "\n";
      return true;
    }
  }
  return false;
}

// "/LOG" is an unknown option; "/tmp/a" and "/9" are files.
bool is_unknown_option(std::string_view argument) {
  if (argument.starts_with('-')) return true;
  return argument.size() >= 2 && argument[0] == '/' && is_alpha(argument[1]) &&
         argument.find('/', 1) == std::string_view::npos;
}

} // namespace

std::span<const Option> command_line_options() { return kOptions; }

CommandLine parse_command_line(const std::vector<std::string>& arguments) {
  CommandLine line;
  for (std::size_t i = 0; i < arguments.size() && !line.help; ++i)
    if (!take_option(line, arguments, i) && !is_unknown_option(arguments[i]))
      line.files.push_back(arguments[i]);
  return line;
}

} // namespace zan

void redirect_tty() {
  const char* path = std::getenv("KR_TTY");
  if (path == nullptr || *path == '\0') return;
  const int terminal = ::open(path, O_RDWR);
  if (terminal < 0) {
    zan::write_fully(STDERR_FILENO,
                     "KR_TTY: cannot open " + std::string(path) + ": " + std::strerror(errno) + "\n");
    std::exit(1);
  }
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(terminal, stream);
  // If one of the three was closed, open may have returned its number.
  if (terminal > STDERR_FILENO) ::close(terminal);
}
