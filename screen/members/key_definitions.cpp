#include "app/editor.h"

#include <array>

#include "text/bytes.h"

namespace {

// Other names of keys in DEFINE KEY.
struct KeyName {
  std::string_view name;
  std::string_view identifier;
};

constexpr auto kKeyNames = std::to_array<KeyName>({
    {"F1", "PF1"},
    {"F2", "PF2"},
    {"F3", "PF3"},
    {"F4", "PF4"},
});

} // namespace

void Editor::define_key_command(const std::string& arg, bool verbose) {
  const std::string text = trim(arg);
  const auto sides = zan::cut_at(text, " AS ");
  if (!sides) {
    report(verbose, "?DEFINE KEY syntax: DEFINE KEY [GOLD] key AS \"command\"");
    return;
  }
  const std::string key_text = trim(sides->before);
  const std::string command = strip_optional_quotes(zan::trim(sides->after));
  const std::string identifier = normalize_key_spec(key_text);
  if (identifier.empty()) {
    report(verbose, "?Invalid key specification");
    return;
  }
  key_definitions[identifier] = command;
  say(verbose, "key ", key_text, " defined as ", command, "\n");
}

std::string Editor::normalize_key_spec(const std::string& text) const {
  const std::string words = upper(text);
  std::string_view rest = words;
  bool gold = false;
  bool control = false;
  std::string_view base;
  for (std::string_view word = zan::take_word(rest); !word.empty(); word = zan::take_word(rest)) {
    if (word == "GOLD") gold = true;
    else if (word == "CONTROL" || word == "CTRL") control = true;
    else base = word;
  }
  if (base.empty()) return "";
  for (const KeyName& key : kKeyNames)
    if (base == key.name) base = key.identifier;
  return std::string(gold ? "GOLD+" : "") + (control ? "CTRL+" : "") + std::string(base);
}

void Editor::show_key_command(const std::string& arg, bool verbose) {
  if (!verbose) return;
  const std::string filter = upper(zan::trim(arg));
  bool shown = false;
  for (const auto& [identifier, command] : key_definitions) {
    if (identifier.find(filter) == std::string::npos) continue;
    say(true, "  ", identifier, " = \"", command, "\"\n");
    shown = true;
  }
  if (shown) return;
  if (filter.empty()) say(true, "No user-defined keys\n");
  else say(true, "?Key not defined: ", arg, "\n");
}

bool Editor::try_defined_key(int key, bool gold) {
  const std::string identifier = key_id_from_input(key, gold);
  const auto found = key_definitions.find(identifier);
  if (identifier.empty() || found == key_definitions.end()) return false;
  const std::string command = found->second; // a copy: it may define its own key anew
  run_screen_command(command);
  return true;
}
