#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/input.h"
#include "text/line_store.h"

// Searching as it is explained to users, without a thought for speed: every column of every line is tried,
// a star tries ever longer runs.
namespace zan::fuzz {

struct NaiveSearch {
  std::string pattern;
  std::string delimiters;
  bool exact = true;
  bool word = false;
  bool begin = false;
  bool end = false;

  // Takes all but the strings from the choices.
  void choose(Input& choices) {
    exact = choices.flag();
    word = choices.flag();
    const std::size_t place = choices.below(3);
    begin = place == 1;
    end = place == 2;
  }
  bool takes_too_long(std::string_view more = "") const { // exponential time
    return std::ranges::count(pattern, '*') + std::ranges::count(more, '*') > 5;
  }
};

inline char fold(char c, bool exact) {
  return !exact && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string fold(std::string_view text, bool exact) {
  std::string folded;
  for (const char c : text) folded += fold(c, exact);
  return folded;
}

inline bool is_wild(std::string_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\') ++i;
    else if (std::string_view("*?%[^$").find(pattern[i]) != std::string_view::npos) return true;
  }
  return false;
}

// Length of the match of the elements `p` at the start of `t`.
inline std::optional<std::size_t> match_here(std::string_view p, std::string_view t) {
  const auto one_and_rest = [&](bool fits, std::size_t taken) -> std::optional<std::size_t> {
    if (!fits || t.empty()) return std::nullopt;
    const auto rest = match_here(p.substr(taken), t.substr(1));
    return rest ? std::optional(*rest + 1) : std::nullopt;
  };
  if (p.empty()) return 0;
  if (p == "$") return t.empty() ? std::optional<std::size_t>(0) : std::nullopt;
  if (p[0] == '\\') return one_and_rest(p.size() > 1 && !t.empty() && t[0] == p[1], 2);
  if (p[0] == '%' || p[0] == '?') return one_and_rest(true, 1);
  if (p[0] == '*') {
    while (p.starts_with('*')) p.remove_prefix(1);
    for (std::size_t run = 0; run <= t.size(); ++run)
      if (const auto rest = match_here(p, t.substr(run))) return run + *rest;
    return std::nullopt;
  }
  if (p[0] == '[') {
    const bool negated = p.size() > 1 && p[1] == '^';
    std::size_t i = negated ? 2 : 1;
    bool member = false;
    for (; i < p.size() && p[i] != ']'; ++i) {
      const auto low = static_cast<unsigned char>(p[i]);
      const bool range = i + 2 < p.size() && p[i + 1] == '-' && p[i + 2] != ']';
      if (range) i += 2;
      const auto high = static_cast<unsigned char>(p[i]);
      const auto c = static_cast<unsigned char>(t.empty() ? 0 : t[0]);
      member = member || (!t.empty() && low <= c && c <= high);
    }
    return one_and_rest(member != negated, std::min(i + 1, p.size()));
  }
  return one_and_rest(!t.empty() && t[0] == p[0], 1);
}

class NaiveSearcher {
 public:
  using Lines = std::vector<std::string>;
  NaiveSearcher(const Lines& lines, const NaiveSearch& wanted)
      : lines_(lines), wanted_(wanted), wild_(is_wild(wanted.pattern)),
        anchored_(wild_ && wanted.pattern.starts_with('^')),
        // Elements end at a NUL; a plain string is searched for byte by byte.
        elements_(fold(wanted.pattern.substr(anchored_ ? 1 : 0), wanted.exact)) {
    if (wild_) elements_ = elements_.substr(0, elements_.find('\0'));
  }

  // The length at a place, whether it matches there or not.
  std::size_t length_at(Position at) const {
    if (!wild_ || at.row >= lines_.size()) return wanted_.pattern.size();
    if (at.col > lines_[at.row].size()) return 0;
    return matches(at).value_or(wanted_.pattern.size());
  }

  std::optional<Position> forward(Position at) const {
    for (;;) {
      const auto found = next(at);
      if (!found || accepted(*found)) return found;
      at = {found->row, found->col + std::max<std::size_t>(length_at(*found), 1)};
    }
  }

  std::optional<Position> backward(Position at) const {
    for (;;) {
      const auto found = previous(at);
      if (!found || accepted(*found)) return found;
      if (found->col > 0) at = {found->row, wild_ ? found->col - 1 : found->col};
      else if (found->row > 0) at = {found->row - 1, lines_[found->row - 1].size()};
      else return std::nullopt;
    }
  }

 private:
  std::optional<std::size_t> matches(Position at) const {
    const std::string text = fold(lines_[at.row], wanted_.exact).substr(at.col);
    if (wild_) return match_here(elements_, text);
    return text.starts_with(elements_) ? std::optional(elements_.size()) : std::nullopt;
  }

  std::optional<Position> next(Position at) const {
    if (wanted_.pattern.empty()) return std::nullopt;
    for (std::size_t row = at.row; row < lines_.size(); ++row) {
      for (std::size_t col = row == at.row ? at.col : 0; col <= lines_[row].size(); ++col)
        if ((!anchored_ || col == 0) && matches({row, col})) return Position{row, col};
    }
    return std::nullopt;
  }

  std::optional<Position> previous(Position at) const {
    if (wanted_.pattern.empty()) return std::nullopt;
    const std::size_t first = std::min<std::size_t>(at.row, lines_.size() - 1);
    for (std::size_t row = first + 1; row-- > 0;) {
      const std::size_t limit =
          row == first ? std::min<std::size_t>(at.col, lines_[row].size()) : lines_[row].size();
      for (std::size_t col = (anchored_ ? 0 : limit) + 1; col-- > 0;) {
        const auto length = matches({row, col});
        if (length && (wild_ || col + *length <= limit)) return Position{row, col};
      }
    }
    return std::nullopt;
  }

  bool accepted(Position at) const {
    const std::string& line = lines_[at.row];
    const std::size_t after = at.col + length_at(at);
    if ((wanted_.begin && at.col != 0) || (wanted_.end && after != line.size())) return false;
    const auto delimits = [&](char c) { return wanted_.delimiters.find(c) != std::string::npos; };
    return !wanted_.word ||
           ((at.col == 0 || delimits(line[at.col - 1])) && (after >= line.size() || delimits(line[after])));
  }

  const Lines& lines_;
  const NaiveSearch& wanted_;
  bool wild_;
  bool anchored_;
  std::string elements_;
};

} // namespace zan::fuzz
