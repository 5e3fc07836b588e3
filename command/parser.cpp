#include "command/parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "text/bytes.h"

namespace zan {
namespace {

// The line as one word that stands for a line: "12", ".+3", ".-2". Not ".", nor the named references.
std::optional<std::string> line_to_go_to(std::string_view word, const LineContext& context) {
  if (all_digits(word)) {
    const auto number = parse_digits(word);
    return number ? std::to_string(*number) : std::string(word);
  }
  if (!word.starts_with(".+") && !word.starts_with(".-")) return std::nullopt;
  const auto row = parse_line_ref(word, context);
  if (!row) return std::nullopt;
  return std::to_string(*row + 1);
}

bool match_exact_form(std::string_view text, ParsedCommand& command) {
  if (text.size() > kLongestForm) return false;
  const std::string line = upper(text);
  const auto row = std::ranges::lower_bound(exact_forms(), line, {}, &ExactForm::line);
  if (row == exact_forms().end() || row->line != line) return false;
  command.key = row->key;
  command.arg = row->arg;
  return true;
}

bool match_prefix_form(std::string_view text, ParsedCommand& command) {
  for (const PrefixForm& row : prefix_forms()) {
    if (!starts_with_ci(text, row.prefix)) continue;
    command.key = row.key;
    command.arg = trim(text.substr(row.prefix.size()));
    return true;
  }
  return false;
}

// The key that has these words; "" when one of them holds a dash, as a key that was typed does.
std::string key_of(std::string_view words) {
  if (words.find('-') != std::string_view::npos) return "";
  std::string key = upper(words);
  std::ranges::replace(key, ' ', '-');
  return key;
}

// The most words at the start of the line that are a key's.
bool match_key(std::string_view text, KeyFormLookup form_of, ParsedCommand& command) {
  std::size_t end = text.size() <= kLongestForm ? text.size() : text.rfind(' ', kLongestForm);
  for (; end != std::string_view::npos && end > 0; end = text.rfind(' ', end - 1)) {
    std::string key = key_of(text.substr(0, end));
    const KeyForm form = form_of(key);
    if (form != KeyForm::either && form != (end == text.size() ? KeyForm::alone : KeyForm::argument))
      continue;
    command.key = std::move(key);
    command.arg = trim(text.substr(end));
    return true;
  }
  return false;
}

// "SUBSTITUTE ALL text" is a command of its own. ALL is a whole word here: "SUBSTITUTE ALLSO" has an
// argument.
void tell_substitute_all(ParsedCommand& command) {
  if (command.key != "SUBSTITUTE") return;
  const std::string_view arg = command.arg;
  if (!starts_with_ci(arg, "ALL") || (arg.size() > 3 && arg[3] != ' ')) return;
  command.key = "SUBSTITUTE-ALL";
  command.arg = std::string(trim(arg.substr(3)));
}

} // namespace

ParsedCommand parse_command(std::string_view line, const LineContext& context, KeyFormLookup form_of) {
  const std::string_view text = trim(line);
  ParsedCommand command{.key = {}, .arg = {}, .text = std::string(text), .quals = {}};
  const auto word_end = std::ranges::find_if(text, is_space);
  const std::string_view first = text.substr(0, static_cast<std::size_t>(word_end - text.begin()));
  if (first.size() == text.size()) {
    if (auto number = line_to_go_to(first, context)) {
      command.key = "GOTO-LINE";
      command.arg = std::move(*number);
      return command;
    }
  }
  if (match_exact_form(text, command)) return command;
  if (match_prefix_form(text, command)) {
    tell_substitute_all(command);
    return command;
  }
  if (match_key(text, form_of, command)) return command;
  command.key = upper(first);
  command.arg = trim(text.substr(first.size()));
  return command;
}

} // namespace zan
