#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Redirects standard input, output and error to the terminal that KR_TTY names, if it is set. Exits with
// status 1 when that cannot be opened.
void redirect_tty();

namespace zan {

struct CommandLine {
  std::vector<std::string> files; // in their order
  std::optional<std::string> command;
  std::optional<std::string> output;
  std::optional<std::string> journal;
  bool read_only = false;
  bool recover = false;
  bool debug_keys = false;
  bool help = false;    // the arguments behind it are not parsed
  std::string messages; // for standard error
};

using OptionFlag = bool CommandLine::*;
using OptionValue = std::optional<std::string> CommandLine::*;

struct Option {
  // Dash forms as typed, slash forms in any case. The value stands behind a last "=", or is the next
  // argument.
  std::array<std::string_view, 4> spellings;
  std::string_view value;   // what it is, for the usage text
  std::string_view meaning; // empty: the usage text leaves the option out
  std::variant<OptionFlag, OptionValue> field;
};

std::span<const Option> command_line_options();

// Parses the arguments after the program's name. If an option is repeated, the last one wins. Unknown options
// are ignored.
CommandLine parse_command_line(const std::vector<std::string>& arguments);

} // namespace zan
