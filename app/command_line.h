#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Standard input, output and error become the terminal that KR_TTY names, when it names one. Ends the program
// with status 1 when it cannot be opened.
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
  bool help = false;    // asked for; what follows was not looked at
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

// The arguments after the program's name. Of an option given twice the last one counts; unknown options and
// slash words are passed over.
CommandLine parse_command_line(const std::vector<std::string>& arguments);

} // namespace zan
