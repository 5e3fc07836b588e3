// SUBSTITUTE against a model that replaces one occurrence after the other, searching anew each time. The
// input: a line of letters that choose settings and the cursor, a line with the old search string, a line
// with the argument, a line with the text of PASTE, the text.
#include "fuzz/editor_state.h"
#include "fuzz/naive_search.h"

namespace {

using zan::Position;
using zan::fuzz::check;
using zan::fuzz::NaiveSearcher;

struct Model {
  std::vector<std::string> lines;
  zan::fuzz::NaiveSearch search;
  Position cursor;
  std::string paste;
  std::string status = {};
  bool stay = false;

  std::optional<Position> forward(Position from) const { return NaiveSearcher(lines, search).forward(from); }
  std::size_t length_at(Position at) const { return NaiveSearcher(lines, search).length_at(at); }

  void find_next() {
    auto found = forward({cursor.row, cursor.col + 1});
    if (!found) found = forward({0, 0});
    if (found) cursor = *found;
  }

  // Returns the place after it, from which the next one is looked for.
  Position replace(Position at, const std::string& text) {
    const std::size_t length = length_at(at);
    lines[at.row].replace(at.col, length, text);
    cursor = at;
    return {at.row, at.col + text.size() + (length == 0 ? 1 : 0)};
  }

  void replace_one(const std::string& text) {
    auto found = forward(cursor);
    if (!found) found = forward({0, 0});
    if (!found) return;
    replace(*found, text);
    if (!stay) {
      cursor.col += text.size();
      find_next();
    }
    status = "Substituted";
  }

  void replace_many(Position from, std::uint64_t limit, bool wraps, const std::string& text) {
    std::uint64_t count = 0;
    for (; count < limit; ++count) {
      auto found = forward(from);
      if (!found && wraps && count == 0) found = forward({0, 0});
      if (!found) break;
      from = replace(*found, text);
    }
    status = std::to_string(count) + (count == 1 ? " substitution" : " substitutions");
  }

  void replace_all(const std::string& given) {
    if (search.pattern.empty()) return;
    const std::string text = Editor::trim(given);
    replace_many({0, 0}, UINT64_MAX, false, text.empty() ? paste : Editor::strip_optional_quotes(text));
  }

  void substitute(const std::string& argument, bool global) {
    const std::string text = Editor::trim(argument);
    std::string replacement = text.empty() ? paste : Editor::strip_optional_quotes(text);
    std::uint64_t count = 1;
    const auto delimits = [](char c) { return c >= 0x21 && c <= 0x7e && std::isalnum(c) == 0; };
    if (!text.empty() && delimits(text[0]) && text[0] != '_') {
      const std::size_t second = text.find(text[0], 1);
      const std::size_t third = second == std::string::npos ? second : text.find(text[0], second + 1);
      if (third == std::string::npos) return;
      search.pattern = text.substr(1, second - 1);
      replacement = text.substr(second + 1, third - second - 1);
      std::string digits = Editor::trim(text.substr(third + 1));
      const bool counted = !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
      digits.erase(0, digits.find_first_not_of('0'));
      if (counted && digits.size() <= 10 && std::stoull("0" + digits) <= INT32_MAX)
        count = std::stoull("0" + digits);
    }
    if (search.pattern.empty()) return;
    if (global) replace_all(replacement);
    else if (count == 1) replace_one(replacement);
    else if (count > 1) replace_many(cursor, count, true, replacement);
  }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 150) return 0;
  zan::fuzz::Input input(data, size);
  zan::fuzz::Input choices = input;
  input.line();
  const std::string searched = input.line();
  const std::string argument = input.line();
  const std::string paste = input.line();
  zan::fuzz::TestEditor editor(input.rest());
  editor.set_paste_text(zan::LineStore::from_text(paste));
  zan::Qualifiers quals;
  Model model;
  model.search = {searched, editor.word_delimiters};
  model.search.choose(choices);
  if (model.search.takes_too_long(argument)) return 0;
  editor.search_string = searched;
  editor.search_exact = model.search.exact;
  editor.search_word = model.search.word;
  editor.search_begin = model.search.begin;
  editor.search_end = model.search.end;
  quals.global = choices.flag();
  quals.stay = model.stay = choices.flag();
  const bool all = choices.flag();
  editor.cursor_row = choices.below(editor.current.line_count());
  editor.cursor_col = choices.below(editor.current.line_length(editor.cursor_row) + 1);
  for (std::uint64_t row = 0; row < editor.current.line_count(); ++row)
    model.lines.emplace_back(editor.current.line(row));
  model.cursor = {editor.cursor_row, editor.cursor_col};
  model.paste = editor.paste_text_content().to_string();

  if (all) model.replace_all(argument);
  else model.substitute(argument, quals.global);
  if (all) editor.substitute_global(argument, false, false);
  else editor.substitute_command(argument, quals, false);
  check(editor.search_string == model.search.pattern);
  check((Position{editor.cursor_row, editor.cursor_col} == model.cursor));
  check(editor.current.line_count() == model.lines.size());
  for (std::uint64_t row = 0; row < model.lines.size(); ++row)
    check(editor.current.line(row) == model.lines[row]);
  // After a failure, or a search for the next one, the message is not the command's own.
  if (model.status.ends_with("s") || model.status.ends_with("d"))
    check(editor.status_message == model.status);
  return 0;
}
