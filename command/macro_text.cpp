#include "command/macro_text.h"

#include <cstddef>

#include "text/bytes.h"

namespace zan {
namespace {

// The length of the first command of `text`.
std::size_t command_length(std::string_view text) {
  char quote = '\0'; // the one that is open
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == ';' || c == '\n') {
      return at;
    }
  }
  return text.size();
}

} // namespace

std::vector<std::string> split_macro_commands(std::string_view definition) {
  std::vector<std::string> commands;
  while (!definition.empty()) {
    const std::size_t length = command_length(definition);
    const std::string_view command = trim(definition.substr(0, length));
    if (!command.empty()) commands.emplace_back(command);
    definition.remove_prefix(length == definition.size() ? length : length + 1);
  }
  return commands;
}

} // namespace zan
