#include "app/editor.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <span>

#include "app/version.h"
#include "command/help_text.h"
#include "text/bytes.h"
#include "text/load_file.h"

// SET and SHOW. Settings of one shape are rows of one table; what fits no shape is a named function in the
// last table. An error never changes a setting.
namespace {

using zan::KeyForm;

const char* on_off(bool on) { return on ? "ON" : "OFF"; }

// SET-name, SET-NOname, SHOW-name.
struct OnOffSetting {
  std::string_view name;
  bool Editor::*field;
  std::string_view label;
};

constexpr auto kOnOffSettings = std::to_array<OnOffSetting>({
    {"AUTOREPEAT", &Editor::autorepeat, "Autorepeat"},
    {"FNF", &Editor::fnf, "FNF"},
    {"QUIET", &Editor::quiet, "Quiet"},
    {"RECOVERY", &Editor::recovery, "Recovery"},
    {"REPEAT", &Editor::repeat, "Repeat"},
    {"SUMMARY", &Editor::summary, "Summary"},
    {"TRUNCATE", &Editor::truncate, "Truncate"},
    {"VERIFY", &Editor::verify, "Verify"},
    {"WRAP", &Editor::wrap, "Wrap"},
});

// SET-name n, SHOW-name: zero or more.
struct NumberSetting {
  std::string_view name;
  int Editor::*field;
  std::string_view label;
  int fallback;                 // for what is no number
  std::string_view zero_remark; // after a 0 that is shown
};

constexpr auto kNumberSettings = std::to_array<NumberSetting>({
    {"LINES", &Editor::screen_lines, "Lines", 0, " (terminal height)"},
    {"SCREEN", &Editor::screen_width, "Screen width", 0, " (auto)"},
    {"TAB", &Editor::tab_width, "Tab width", 8, ""},
});

// SET-name word, SHOW-name.
struct ChoiceSetting {
  std::string_view name;
  std::string Editor::*field;
  std::string_view label;
  std::array<std::string_view, 4> choices;
  std::string_view error;
  bool shown_after_error;
};

constexpr auto kChoiceSettings = std::to_array<ChoiceSetting>({
    {"CASE",
     &Editor::case_mode,
     "Case",
     {"NONE", "LOWER", "UPPER"},
     "?SET CASE expects NONE|LOWER|UPPER\n",
     true},
    {"KEYPAD",
     &Editor::keypad,
     "Keypad",
     {"ZAN", "NOKEYPAD", "WPS", "PC"},
     "?SET KEYPAD expects ZAN|NOKEYPAD|WPS|PC\n",
     false},
    {"PARAGRAPH",
     &Editor::paragraph,
     "Paragraph",
     {"WPS", "NOWPS"},
     "?SET PARAGRAPH expects WPS|NOWPS\n",
     true},
    {"PASTE", &Editor::pasting, "Paste", {"KEYS", "EXACT"}, "?SET PASTE expects KEYS|EXACT\n", true},
});

// SET SEARCH word: sets one flag and clears another.
struct SearchWord {
  std::string_view name;
  bool Editor::*field;
  bool value = true;
  bool Editor::*cleared = nullptr;
};

constexpr auto kSearchWords = std::to_array<SearchWord>({
    {"EXACT", &Editor::search_exact},
    {"GENERAL", &Editor::search_exact, false},
    {"BEGIN", &Editor::search_begin, true, &Editor::search_end},
    {"END", &Editor::search_end, true, &Editor::search_begin},
    {"WILD", &Editor::search_wild},
    {"WORD", &Editor::search_word},
    {"NOWORD", &Editor::search_word, false},
});

// The row of that name, or null.
template <typename Row, std::size_t size>
const Row* find_row(const std::array<Row, size>& table, std::string_view name) {
  const auto row = std::ranges::find(table, name, &Row::name);
  return row != table.end() ? &*row : nullptr;
}

bool set_search(Editor& editor, std::string_view word) {
  const SearchWord* row = find_row(kSearchWords, word);
  if (row == nullptr) return false;
  editor.*row->field = row->value;
  if (row->cleared != nullptr) editor.*row->cleared = false;
  return true;
}

// Removes one signed number from the start of `text`.
std::optional<int> take_int(std::string_view& text) {
  while (!text.empty() && zan::is_space(text.front())) text.remove_prefix(1);
  std::size_t length = !text.empty() && (text.front() == '+' || text.front() == '-') ? 1 : 0;
  while (length < text.size() && zan::is_digit(text[length])) ++length;
  const auto number = zan::parse_int_prefix(text.substr(0, length));
  text.remove_prefix(length);
  return number;
}

// ---- settings of a shape of their own: the argument is trimmed; nothing is printed unless verbose

void show_numbers(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, e.line_numbers ? "line numbers enabled\n" : "line numbers disabled\n");
}

template <bool on> void set_numbers(Editor& e, const std::string& arg, bool verbose) {
  e.line_numbers = on;
  e.status_message = on ? "Line numbers ON" : "Line numbers OFF";
  show_numbers(e, arg, verbose);
}

template <bool on> void set_overstrike(Editor& e, const std::string&, bool verbose) {
  e.overstrike = on;
  e.status_message = on ? "Overstrike mode" : "Insert mode";
  e.say(verbose, e.status_message, "\n");
}

void set_mode_line(Editor& e, const std::string&, bool) { e.mode = "Line"; }
void show_mode(Editor& e, const std::string&, bool verbose) { e.say(verbose, e.mode, "\n"); }
void show_version(Editor& e, const std::string&, bool verbose) { e.say(verbose, zan_version_banner()); }

void set_search_word(Editor& e, const std::string& arg, bool verbose) {
  if (!set_search(e, Editor::upper(arg)))
    e.say(verbose, "?SET SEARCH expects EXACT|GENERAL|BEGIN|END|WILD|WORD|NOWORD\n");
}

void show_search(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Search: ", e.search_string.empty() ? "(none)" : "\"" + e.search_string + "\"",
        e.search_exact ? " [EXACT]" : " [GENERAL]", e.search_begin ? " BEGIN" : "",
        e.search_end ? " END" : "", e.search_wild ? " WILD" : "", e.search_word ? " WORD" : "", "\n");
}

void show_cursor(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Cursor margins: ", std::to_string(e.cursor_top_margin), " ",
        std::to_string(e.cursor_bottom_margin), "\n");
}

void set_cursor(Editor& e, const std::string& arg, bool verbose) {
  std::string_view rest = arg;
  const auto top = take_int(rest);
  const auto bottom = take_int(rest);
  if (top && bottom) {
    e.cursor_top_margin = *top;
    e.cursor_bottom_margin = *bottom;
  } else {
    e.say(verbose, "?SET CURSOR expects top bottom\n");
  }
  show_cursor(e, arg, verbose);
}

// Counted from one. On the screen the line goes to the message row.
void show_position(Editor& e, const std::string&, bool verbose) {
  const zan::LineStore& text = e.current.lines();
  const std::uint64_t row = std::min(e.cursor_row, text.line_count() - 1);
  const std::uint64_t at = text.line_start(row) + std::min(e.cursor_col, text.line_length(row));
  const std::string column = std::to_string(at - text.line_start(row) + 1);
  const std::string there =
      at < text.line_end(row) ? "character " + zan::hexadecimal(text.byte_at(at)) : "end of line";
  e.tell(verbose, "Line ", std::to_string(row + 1), " of ", std::to_string(text.line_count()), ", column ",
         column, ", byte ", column, ", ", there);
}

void show_prompt(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Prompt: \"", e.prompt, "\"\n");
}

void set_prompt(Editor& e, const std::string& arg, bool verbose) {
  e.prompt = Editor::strip_optional_quotes(arg);
  show_prompt(e, arg, verbose);
}

void show_help(Editor& e, const std::string&, bool verbose) { e.say(verbose, "Help: ", e.help_file, "\n"); }

void set_help(Editor& e, const std::string& arg, bool verbose) {
  e.help_file = Editor::strip_optional_quotes(arg);
  show_help(e, arg, verbose);
}

void set_command(Editor& e, const std::string& arg, bool verbose) {
  e.command_setting = Editor::strip_optional_quotes(arg);
  e.say(verbose, "Command file: ", e.command_setting, "\n");
  // A copy of the path: the file may hold another SET COMMAND.
  if (const std::string path = e.command_setting; Editor::file_exists(path))
    e.run_command_file(path, verbose);
}

void show_command(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Command file: ", e.command_setting.empty() ? "(none)" : e.command_setting, "\n");
}

void set_terminal(Editor& e, const std::string& arg, bool verbose) {
  e.terminal = Editor::strip_optional_quotes(arg);
  if (!e.terminal.empty()) setenv("TERM", e.terminal.c_str(), 1);
  e.say(verbose, "Terminal: ", e.terminal, "\n");
}

void show_terminal(Editor& e, const std::string&, bool verbose) {
  const char* term = std::getenv("TERM");
  const std::string remark = term != nullptr && *term != '\0' ? " (TERM=" + std::string(term) + ")" : "";
  e.say(verbose, "Terminal: ", e.terminal, remark, "\n");
}

void set_entity(Editor& e, const std::string& arg, bool verbose) {
  e.word_delimiters = Editor::strip_optional_quotes(arg);
  e.word_delimiters_on = true;
  e.say(verbose, "Word delimiters: \"", e.word_delimiters, "\"\n");
}

void set_word_delimiter(Editor& e, const std::string& arg, bool verbose) {
  e.word_delimiters_on = Editor::upper(arg) != "OFF";
  e.say(verbose, "Word delimiter: ", on_off(e.word_delimiters_on), "\n");
}

void show_entity(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Word delimiters: ", on_off(e.word_delimiters_on), " \"", e.word_delimiters, "\"\n");
}

void show_text(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Text FORMFEED=\"", e.text_formfeed, "\" END=\"", e.text_end, "\"\n");
}

void set_text(Editor& e, const std::string& arg, bool verbose) {
  const auto value = [&](std::size_t skipped) {
    return Editor::strip_optional_quotes(zan::trim(std::string_view(arg).substr(skipped)));
  };
  if (zan::starts_with_ci(arg, "FORMFEED ")) {
    e.text_formfeed = value(9);
  } else if (zan::starts_with_ci(arg, "END ")) {
    e.text_end = value(4);
  } else {
    e.say(verbose, "?SET TEXT expects FORMFEED string | END string\n");
  }
  show_text(e, arg, verbose);
}

void show_rms(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, e.rms_fixed ? "RMS: FIXED " + std::to_string(e.rms_record_length) : "RMS: VARIABLE", "\n");
}

void set_rms(Editor& e, const std::string& arg, bool verbose) {
  const std::string value = Editor::upper(arg);
  if (value.empty() || value == "VARIABLE") {
    e.rms_fixed = false;
    e.rms_record_length = 0;
  } else if (value.starts_with("FIXED")) {
    e.rms_fixed = true;
    const std::string_view length = zan::trim(std::string_view(arg).substr(5));
    e.rms_record_length = std::max(1, zan::parse_int_prefix(length).value_or(80));
  } else {
    e.say(verbose, "?SET RMS expects FIXED n | VARIABLE\n");
  }
  show_rms(e, arg, verbose);
}

void show_versioning(Editor& e, const std::string&, bool verbose) {
  e.say(verbose, "Versioning: ", on_off(e.vms_versions), "\n");
}

void set_versioning(Editor& e, const std::string& arg, bool verbose) {
  const std::string value = Editor::upper(arg);
  if (value.empty() || value == "ON" || value == "YES") {
    e.vms_versions = true;
  } else if (value == "OFF" || value == "NO") {
    e.vms_versions = false;
  } else {
    e.say(verbose, "?SET VERSIONING expects ON|OFF\n");
  }
  show_versioning(e, arg, verbose);
}

struct OtherSetting {
  std::string_view key;
  void (*run)(Editor&, const std::string& arg, bool verbose);
  KeyForm form = KeyForm::alone;
};

constexpr auto kOtherSettings = std::to_array<OtherSetting>({
    {"SET-COMMAND", set_command, KeyForm::argument},
    {"SET-CURSOR", set_cursor, KeyForm::argument},
    {"SET-ENTITY", set_entity, KeyForm::argument},
    {"SET-HELP", set_help, KeyForm::argument},
    {"SET-INSERT", set_overstrike<false>},
    {"SET-MODE-LINE", set_mode_line},
    {"SET-NONUMBERS", set_numbers<false>},
    {"SET-NOOVERSTRIKE", set_overstrike<false>},
    {"SET-NUMBERS", set_numbers<true>},
    {"SET-OVERSTRIKE", set_overstrike<true>},
    {"SET-OVERTYPE", set_overstrike<true>},
    {"SET-PROMPT", set_prompt, KeyForm::argument},
    {"SET-RMS", set_rms, KeyForm::argument},
    {"SET-SEARCH", set_search_word, KeyForm::argument},
    {"SET-TERMINAL", set_terminal, KeyForm::argument},
    {"SET-TEXT", set_text, KeyForm::argument},
    {"SET-VERSIONING", set_versioning, KeyForm::argument},
    {"SET-WORD-DELIM", set_word_delimiter, KeyForm::unspelled},
    {"SHOW-COMMAND", show_command},
    {"SHOW-CURSOR", show_cursor},
    {"SHOW-ENTITY", show_entity},
    {"SHOW-HELP", show_help},
    {"SHOW-MODE", show_mode},
    {"SHOW-NUMBERS", show_numbers},
    {"SHOW-POSITION", show_position},
    {"SHOW-PROMPT", show_prompt},
    {"SHOW-RMS", show_rms},
    {"SHOW-SEARCH", show_search},
    {"SHOW-TERMINAL", show_terminal},
    {"SHOW-TEXT", show_text},
    {"SHOW-VERSION", show_version},
    {"SHOW-VERSIONING", show_versioning},
});

static_assert(std::ranges::is_sorted(kOtherSettings, {}, &OtherSetting::key));
static_assert(std::ranges::all_of(kOtherSettings, [](auto row) { return zan::suits(row.key, row.form); }));

const OtherSetting* find_other(std::string_view key) {
  const auto row = std::ranges::lower_bound(kOtherSettings, key, {}, &OtherSetting::key);
  return row != kOtherSettings.end() && row->key == key ? &*row : nullptr;
}

// ---- the shapes; each says whether the key was one of its rows

// A key, taken apart at its first dash.
struct Verb {
  bool set;
  std::string_view name;
};

std::optional<Verb> take_apart(std::string_view key) {
  if (key.starts_with("SET-")) return Verb{true, key.substr(4)};
  if (key.starts_with("SHOW-")) return Verb{false, key.substr(5)};
  return std::nullopt;
}

const OnOffSetting* find_on_off(bool set, std::string_view name) {
  const OnOffSetting* row = find_row(kOnOffSettings, name);
  return row == nullptr && set && name.starts_with("NO") ? find_row(kOnOffSettings, name.substr(2)) : row;
}

bool is_search_word(std::string_view name) {
  return name.starts_with("SEARCH-") && find_row(kSearchWords, name.substr(7)) != nullptr;
}

bool run_on_off(Editor& e, bool set, std::string_view name, bool verbose) {
  const OnOffSetting* row = find_on_off(set, name);
  if (row == nullptr) return false;
  if (set) e.*row->field = name == row->name;
  e.say(verbose, row->label, set ? " " : ": ", on_off(e.*row->field), "\n");
  return true;
}

bool run_number(Editor& e, bool set, std::string_view name, const std::string& arg, bool verbose) {
  const NumberSetting* row = find_row(kNumberSettings, name);
  if (row == nullptr) return false;
  int& value = e.*row->field;
  if (set) value = std::max(0, zan::parse_int_prefix(arg).value_or(row->fallback));
  e.say(verbose, row->label, ": ", std::to_string(value), !set && value == 0 ? row->zero_remark : "", "\n");
  return true;
}

bool run_choice(Editor& e, bool set, std::string_view name, const std::string& arg, bool verbose) {
  const ChoiceSetting* row = find_row(kChoiceSettings, name);
  if (row == nullptr) return false;
  bool show = true;
  if (set) {
    const std::string word = Editor::upper(arg);
    if (!word.empty() && std::ranges::find(row->choices, word) != row->choices.end()) {
      e.*row->field = word;
    } else {
      e.say(verbose, row->error);
      show = row->shown_after_error;
    }
  }
  e.say(verbose && show, row->label, ": ", e.*row->field, "\n");
  return true;
}

bool run_other(Editor& e, std::string_view key, const std::string& arg, bool verbose) {
  const OtherSetting* row = find_other(key);
  if (row == nullptr) return false;
  row->run(e, arg, verbose);
  return true;
}

} // namespace

zan::KeyForm Editor::setting_form(std::string_view key) {
  const auto verb = take_apart(key);
  if (!verb) return KeyForm::unspelled;
  const auto [set, name] = *verb;
  if (find_on_off(set, name) != nullptr || (set && is_search_word(name))) return KeyForm::alone;
  if (find_row(kNumberSettings, name) != nullptr || find_row(kChoiceSettings, name) != nullptr)
    return set ? KeyForm::argument : KeyForm::alone;
  const OtherSetting* row = find_other(key);
  return row != nullptr ? row->form : KeyForm::unspelled;
}

std::optional<Editor::CommandResult> Editor::run_setting(const ParsedCommand& command, bool verbose) {
  const auto verb = take_apart(command.key);
  if (!verb) return std::nullopt;
  const auto [set, name] = *verb;
  const std::string& arg = command.arg;
  const bool done = run_on_off(*this, set, name, verbose) || run_number(*this, set, name, arg, verbose) ||
                    run_choice(*this, set, name, arg, verbose) ||
                    run_other(*this, command.key, arg, verbose) ||
                    (set && name.starts_with("SEARCH-") && set_search(*this, name.substr(7)));
  return done ? std::optional(CommandResult::Continue) : std::nullopt;
}

void Editor::print_line_help(const std::string& topic) const {
  if (!help_file.empty() && help_file != "ZANHELP" && file_exists(help_file)) {
    if (const auto text = zan::read_whole_file(help_file, g_zan_abort_requested)) {
      say(true, *text, text->empty() || text->ends_with('\n') ? "" : "\n");
      return;
    }
  }
  say(true, zan::help_text(topic, zan_version_string(), zan_version_banner()));
}
