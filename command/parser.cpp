#include "command/parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "text/bytes.h"

namespace zan {
namespace {

// The number of the line that a word alone goes to: "12", ".+3", ".-2". Not ".", nor the named references.
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

// ---- the forms; `start` is the line's start in upper case, as long as a form can be

bool match_exact_form(std::string_view start, ParsedCommand& command) {
  const auto row = std::ranges::lower_bound(exact_forms(), start, {}, &ExactForm::line);
  if (row == exact_forms().end() || row->line != start) return false;
  command.key = row->key;
  command.arg = row->arg;
  return true;
}

bool match_prefix_form(std::string_view text, std::string_view start, ParsedCommand& command) {
  for (const PrefixForm& row : prefix_forms()) {
    if (!start.starts_with(row.prefix)) continue;
    command.key = row.key;
    command.arg = trim(text.substr(row.prefix.size()));
    return true;
  }
  return false;
}

// Do the words spell a key that may be typed in that form? A typed dash does not stand for a dash of the key.
bool match_key(std::string_view words, KeyForm wanted, KeyFormLookup form_of, ParsedCommand& command) {
  if (words.find('-') != std::string_view::npos) return false;
  std::string key(words);
  std::ranges::replace(key, ' ', '-');
  const KeyForm form = form_of(key);
  if (form != wanted && form != KeyForm::either) return false;
  command.key = std::move(key);
  return true;
}

bool match_key_alone(std::string_view start, KeyFormLookup form_of, ParsedCommand& command) {
  return start.find(' ') != std::string_view::npos && match_key(start, KeyForm::alone, form_of, command);
}

bool match_key_with_argument(std::string_view text, std::string_view start, KeyFormLookup form_of,
                             ParsedCommand& command) {
  const std::size_t first = start.find(' ');
  if (first == std::string_view::npos) return false;
  const std::size_t second = start.find(' ', first + 1);
  if (second == std::string_view::npos) return false;
  if (!match_key(start.substr(0, second), KeyForm::argument, form_of, command)) return false;
  command.arg = trim(text.substr(second));
  return true;
}

// "SUBSTITUTE ALL text" is a command of its own. ALL must be a whole word: in "SUBSTITUTE ALLSO" it begins
// the argument.
void recognise_substitute_all(ParsedCommand& command) {
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
  const std::string start = upper(text.substr(0, kLongestForm));
  if (start.size() == text.size() &&
      (match_exact_form(start, command) || match_key_alone(start, form_of, command)))
    return command;
  if (match_prefix_form(text, start, command)) {
    recognise_substitute_all(command);
    return command;
  }
  if (match_key_with_argument(text, start, form_of, command)) return command;
  command.key = upper(first);
  command.arg = trim(text.substr(first.size()));
  return command;
}

} // namespace zan
