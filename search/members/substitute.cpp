#include "app/editor.h"

#include <algorithm>
#include <climits>

#include "search/substitution.h"
#include "text/bytes.h"

namespace {

constexpr std::uint64_t kNoLimit = UINT64_MAX;

struct DelimitedForm {
  std::string old_text;
  std::string new_text;
  std::optional<std::uint64_t> count; // nothing: one, as without a count
};

// "/old/new/" or "/old/new/N", with any delimiter. Nothing when one of the three is missing.
std::optional<DelimitedForm> parse_delimited(std::string_view text) {
  const std::size_t second = text.find(text.front(), 1);
  if (second == std::string_view::npos) return std::nullopt;
  const std::size_t third = text.find(text.front(), second + 1);
  if (third == std::string_view::npos) return std::nullopt;
  DelimitedForm form{std::string(text.substr(1, second - 1)),
                     std::string(text.substr(second + 1, third - second - 1)),
                     zan::parse_digits(zan::trim(text.substr(third + 1)))};
  if (form.count && *form.count > INT_MAX) form.count.reset();
  return form;
}

bool is_delimited(std::string_view text) {
  return !text.empty() && zan::is_punct(text.front()) && text.front() != '_';
}

} // namespace

void Editor::substitute_command(const std::string& arg, const Qualifiers& quals, bool verbose) {
  const std::string text = trim(arg);
  std::string replacement;
  std::optional<std::uint64_t> count;
  if (is_delimited(text)) {
    auto form = parse_delimited(text);
    if (!form) {
      report(verbose, "?Invalid SUBSTITUTE syntax");
      return;
    }
    search_string = std::move(form->old_text);
    replacement = std::move(form->new_text);
    count = form->count;
  } else {
    replacement = text.empty() ? paste_text_content().to_string() : strip_optional_quotes(text);
  }
  if (search_string.empty()) {
    report(verbose, "?No active search string");
  } else if (quals.global) {
    substitute_global(replacement, quals.query, verbose);
  } else if (count == 0) {
    say(verbose, "0 substitutions\n");
  } else if (count.value_or(1) == 1) {
    substitute_one(replacement, quals, verbose);
  } else {
    substitute_many({cursor_row, cursor_col}, *count, true, replacement, quals.query, verbose);
  }
}

void Editor::substitute_global(const std::string& text, bool query, bool verbose) {
  if (search_string.empty()) {
    report(verbose, "?No active search string");
    return;
  }
  const std::string trimmed = trim(text);
  const std::string replacement =
      trimmed.empty() ? paste_text_content().to_string() : strip_optional_quotes(trimmed);
  substitute_many({0, 0}, kNoLimit, false, replacement, query, verbose);
}

// The next occurrence, at the cursor or after it, wrapping once.
void Editor::substitute_one(const std::string& replacement, const Qualifiers& quals, bool verbose) {
  auto found = search_forward(cursor_row, cursor_col);
  if (!found) found = search_forward(0, 0);
  if (!found) {
    report(verbose, "?String not found: ", search_string);
    return;
  }
  cursor_row = found->row;
  cursor_col = found->col;
  match_length = current.match_len_at(search_string, cursor_row, cursor_col, search_exact);
  if (quals.query && verbose) {
    const AbortGuard guard;
    const Answer answer = ask_to_substitute(verbose);
    if (answer == Answer::no && !quals.stay) find_next(Direction::Advance);
    if (answer != Answer::yes) return;
  }
  current.replace_in_line(cursor_row, cursor_col, match_length, replacement);
  if (!quals.stay) {
    cursor_col += replacement.size();
    find_next(Direction::Advance);
  }
  status_message = "Substituted";
  if (verbose) type_current_line();
}

// Up to `limit` occurrences from `start` on. With `wrap`, once more from the top while none has been
// replaced.
void Editor::substitute_many(zan::Position start, std::uint64_t limit, bool wraps,
                             const std::string& replacement, bool query, bool verbose) {
  const AbortGuard guard;
  const std::uint64_t count = query && verbose ? substitute_asking(start, limit, wraps, replacement)
                                               : substitute_at_once(start, limit, wraps, replacement);
  check_abort(verbose);
  status_message = zan::counted(count, "substitution");
  say(verbose, status_message, "\n");
}

std::uint64_t Editor::substitute_at_once(zan::Position start, std::uint64_t limit, bool wraps,
                                         const std::string& replacement) {
  const zan::Pattern pattern(search_string, search_exact);
  const zan::SearchConstraints wanted = search_constraints();
  zan::Substitution done =
      zan::substitute(current.lines(), pattern, wanted, start, limit, replacement, g_zan_abort_requested);
  if (done.count == 0 && wraps)
    done =
        zan::substitute(current.lines(), pattern, wanted, {0, 0}, limit, replacement, g_zan_abort_requested);
  if (done.changed) current.replace_lines(std::move(done.text));
  if (done.count > 0) {
    cursor_row = done.last.row;
    cursor_col = done.last.col;
  }
  return done.count;
}

std::uint64_t Editor::substitute_asking(zan::Position at, std::uint64_t limit, bool wraps,
                                        const std::string& replacement) {
  std::uint64_t count = 0;
  while (count < limit && g_zan_abort_requested == 0) {
    auto found = search_forward(at.row, at.col);
    if (!found && wraps && count == 0) found = search_forward(0, 0);
    if (!found) break;
    cursor_row = found->row;
    cursor_col = found->col;
    const std::uint64_t length = current.match_len_at(search_string, cursor_row, cursor_col, search_exact);
    const Answer answer = ask_to_substitute(true);
    if (answer == Answer::stop) break;
    std::uint64_t passed = length;
    if (answer == Answer::yes) {
      current.replace_in_line(cursor_row, cursor_col, length, replacement);
      passed = replacement.size();
      ++count;
    }
    at = {cursor_row, cursor_col + passed + (length == 0 ? 1 : 0)};
  }
  return count;
}

// Shows the cursor line and asks. The end of input and Ctrl/C stop the command.
Editor::Answer Editor::ask_to_substitute(bool verbose) {
  const zan::TextView line = current.line(cursor_row);
  say(true, std::to_string(cursor_row + 1), " ", line.get(), "\n");
  const auto answer = read_text_line("Substitute? [Y/N]: ", true).text;
  if (check_abort(verbose) || !answer) return Answer::stop;
  return upper(zan::trim(*answer)) == "Y" ? Answer::yes : Answer::no;
}
