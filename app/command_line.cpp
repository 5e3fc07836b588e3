#include "app/command_line.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "app/console.h"
#include "text/bytes.h"

namespace zan {

namespace {

struct Flag {
  std::string_view spelling; // dash forms as typed, slash forms in any case
  bool CommandLine::*field;
};

constexpr auto kFlags = std::to_array<Flag>({
    {"-d", &CommandLine::debug_keys},
    {"-k", &CommandLine::debug_keys},
    {"/DEBUG", &CommandLine::debug_keys},
    {"/DEBUG_KEYS", &CommandLine::debug_keys},
    {"-readonly", &CommandLine::read_only},
    {"/READ_ONLY", &CommandLine::read_only},
    {"/READONLY", &CommandLine::read_only},
    {"-recover", &CommandLine::recover},
    {"/RECOVER", &CommandLine::recover},
    {"-h", &CommandLine::help},
    {"--help", &CommandLine::help},
    {"/?", &CommandLine::help},
});

struct ValuedOption {
  std::string_view prefix;
  std::optional<std::string> CommandLine::*field;
};

constexpr auto kValuedOptions = std::to_array<ValuedOption>({
    {"-command=", &CommandLine::command},
    {"-output=", &CommandLine::output},
    {"/OUTPUT=", &CommandLine::output},
    {"-journal=", &CommandLine::journal},
    {"/JOURNAL=", &CommandLine::journal},
});

bool take_flag(CommandLine& line, std::string_view spelled) {
  for (const Flag& flag : kFlags) {
    if (spelled != flag.spelling) continue;
    line.*flag.field = true;
    return true;
  }
  return false;
}

bool take_value(CommandLine& line, std::string_view spelled, const std::string& argument) {
  for (const ValuedOption& option : kValuedOptions) {
    if (!spelled.starts_with(option.prefix)) continue;
    line.*option.field = argument.substr(option.prefix.size());
    return true;
  }
  return false;
}

// "/LOG" is a qualifier that nobody knows; "/tmp/a" and "/9" are files.
bool is_unknown_option(std::string_view argument) {
  if (argument.starts_with('-')) return true;
  return argument.size() >= 2 && argument[0] == '/' && is_alpha(argument[1]) &&
         argument.find('/', 1) == std::string_view::npos;
}

} // namespace

CommandLine parse_command_line(const std::vector<std::string>& arguments) {
  CommandLine line;
  for (std::size_t i = 0; i < arguments.size() && !line.help; ++i) {
    const std::string& argument = arguments[i];
    const std::string spelled = argument.starts_with('/') ? upper(argument) : argument;
    if (argument == "-command") {
      if (i + 1 < arguments.size()) line.command = arguments[++i];
      else line.messages += "?Missing file after -command\n";
    } else if (!take_flag(line, spelled) && !take_value(line, spelled, argument) &&
               !is_unknown_option(argument)) {
      line.files.push_back(argument);
    }
  }
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
  // It may itself be one of the three, when that was closed.
  if (terminal > STDERR_FILENO) ::close(terminal);
}
