#include "search/text_search.h"

#include <algorithm>

#include "search/store_scan.h"
#include "text/bytes.h"

namespace zan {

namespace {

// Does a match at `offset` of the text satisfy the constraints? Its line is not fetched, for it may be long.
bool constraints_ok_at(const LineStore& text, std::uint64_t offset, std::uint64_t length,
                       const SearchConstraints& wanted) {
  const Position at = text.position_of(offset);
  const bool at_end = offset + length == text.line_end(at.row);
  const LeftSide left{at.col == 0, at.col == 0 ? '\0' : text.byte_at(offset - 1)};
  const TextView around = text.slice(offset, offset + length + (at_end ? 0 : 1));
  return constraints_ok(left, around, 0, in_memory(length), wanted);
}

// The occurrences of a plain string without a line feed. None crosses a line break, so the search ignores
// lines.
class PlainSearch {
 public:
  PlainSearch(const LineStore& text, const SearchConstraints& wanted, Abort& abort)
      : text_(text), wanted_(wanted), abort_(abort) {}

  std::optional<Position> forward(const Substring& needle, std::uint64_t from) const {
    StoreScan scan(text_, needle, from, text_.byte_count(), StoreScan::Way::forward);
    while (abort_ == 0) {
      const auto found = scan.next(from);
      if (!found) break;
      if (accepts(scan, *found, needle.size())) return text_.position_of(*found);
      from = *found + needle.size();
    }
    return std::nullopt;
  }

  std::optional<Position> backward(const Substring& needle, std::uint64_t until) const {
    StoreScan scan(text_, needle, 0, until, StoreScan::Way::backward);
    while (abort_ == 0) {
      const auto found = scan.previous(until);
      if (!found) break;
      if (accepts(scan, *found, needle.size())) return text_.position_of(*found);
      until = *found;
    }
    return std::nullopt;
  }

 private:
  bool accepts(const StoreScan& scan, std::uint64_t offset, std::size_t length) const {
    if (wanted_.none()) return true;
    const std::string_view window = scan.window();
    const std::size_t begin = in_memory(offset - scan.window_begin());
    const std::size_t end = begin + length;
    if (scan.window_is_literal() || begin == 0 || end == window.size())
      return constraints_ok_at(text_, offset, length, wanted_);
    const LeftSide left{window[begin - 1] == '\n', window[begin - 1]};
    const std::string_view around = window.substr(begin, window[end] == '\n' ? length : length + 1);
    return constraints_ok(left, around, 0, length, wanted_);
  }

  const LineStore& text_;
  const SearchConstraints& wanted_;
  Abort& abort_;
};

// The lines that a wildcard pattern may match in: those that contain its required bytes, or all when it
// requires none. The others are skipped at the speed of the scan.
class CandidateLines {
 public:
  // Goes forward to the end of the text or backward to its beginning.
  CandidateLines(const LineStore& text, const Pattern& pattern, std::uint64_t start, StoreScan::Way way)
      : text_(text), required_(pattern.required()),
        scan_(text, required_, way == StoreScan::Way::forward ? start : 0,
              way == StoreScan::Way::forward ? text.byte_count() : start, way) {}

  // The first one that may contain a match starting at or after `from`, which never decreases.
  bool next(std::uint64_t from) {
    if (from > text_.byte_count()) return false;
    if (required_.empty()) scan_.reach(from);
    return load(required_.empty() ? from : scan_.next(from));
  }
  // The last one that ends at or before `until`, which is a line's end and never increases.
  bool previous(std::uint64_t until) {
    if (required_.empty()) scan_.reach(until);
    return load(required_.empty() ? until : scan_.previous(until));
  }

  std::string_view line() const { return line_; }
  std::uint64_t begin() const { return begin_; }

 private:
  bool load(std::optional<std::uint64_t> offset) {
    if (offset && !load_from_window(*offset)) {
      const Position at = text_.position_of(*offset);
      begin_ = *offset - at.col;
      line_ = text_.line(at.row);
    }
    return offset.has_value();
  }

  // Finds the line around `offset` in the scan's window. False when it is long or extends beyond the window.
  bool load_from_window(std::uint64_t offset) {
    constexpr std::size_t kNear = 4096;
    if (scan_.window_is_literal() || offset < scan_.window_begin() || offset > scan_.window_end())
      return false;
    const std::string_view window = scan_.window();
    const std::size_t at = in_memory(offset - scan_.window_begin());
    const std::size_t near = at - std::min(at, kNear);
    const std::size_t before = window.substr(near, at - near).rfind('\n');
    const std::size_t after = window.substr(at, kNear).find('\n');
    if (before == std::string_view::npos || after == std::string_view::npos) return false;
    const std::size_t first = near + before + 1;
    begin_ = scan_.window_begin() + first;
    line_ = TextView(window.substr(first, at + after - first));
    return true;
  }

  const LineStore& text_;
  const Substring& required_;
  StoreScan scan_;
  TextView line_;
  std::uint64_t begin_ = 0; // of the line
};

// The first match in one line, from a column on, that satisfies the constraints.
std::optional<std::size_t> line_forward(std::string_view line, const Pattern& pattern, std::size_t from,
                                        const SearchConstraints& wanted, Abort& abort) {
  while (const auto col = pattern.find_forward(line, from, abort)) {
    if (wanted.none()) return col;
    const std::size_t length = pattern.match_length(line, *col, abort);
    if (abort != 0) break;
    if (constraints_ok(line, *col, length, wanted)) return col;
    from = *col + std::max<std::size_t>(length, 1);
  }
  return std::nullopt;
}

std::optional<std::size_t> line_backward(std::string_view line, const Pattern& pattern, std::size_t limit,
                                         const SearchConstraints& wanted, Abort& abort) {
  BackwardMatches matches(pattern, line, abort);
  while (const auto col = matches.previous(limit)) {
    if (wanted.none()) return col;
    const std::size_t length = matches.length_at(*col);
    if (abort != 0) break;
    if (constraints_ok(line, *col, length, wanted)) return col;
    if (*col == 0) break;
    limit = pattern.is_wildcard() ? *col - 1 : *col;
  }
  return std::nullopt;
}

std::optional<Position> lines_forward(const LineStore& text, const Pattern& pattern, std::uint64_t from,
                                      const SearchConstraints& wanted, Abort& abort) {
  CandidateLines lines(text, pattern, from, StoreScan::Way::forward);
  while (abort == 0 && lines.next(from)) {
    const std::size_t col = in_memory(std::max(from, lines.begin()) - lines.begin());
    if (const auto found = line_forward(lines.line(), pattern, col, wanted, abort))
      return text.position_of(lines.begin() + *found);
    from = lines.begin() + lines.line().size() + 1;
  }
  return std::nullopt;
}

std::optional<Position> lines_backward(const LineStore& text, const Pattern& pattern, Position start,
                                       const SearchConstraints& wanted, Abort& abort) {
  // In the first line a match may extend beyond the limit, so the scan for required bytes begins above it.
  const TextView line = text.line(start.row);
  const auto found = line_backward(line, pattern, in_memory(start.col), wanted, abort);
  if (found) return Position{start.row, *found};
  std::uint64_t begin = text.line_start(start.row);
  CandidateLines lines(text, pattern, begin, StoreScan::Way::backward);
  while (abort == 0 && begin > 0 && lines.previous(begin - 1)) {
    begin = lines.begin();
    if (const auto col = line_backward(lines.line(), pattern, lines.line().size(), wanted, abort))
      return text.position_of(begin + *col);
  }
  return std::nullopt;
}

// A plain string is searched without regard to lines, unless it holds a line feed itself.
bool ignores_lines(const Pattern& pattern) { return !pattern.is_wildcard() && !pattern.requires_line_feed(); }

bool cannot_match(const LineStore& text, const Pattern& pattern) {
  return pattern.empty() || (pattern.requires_line_feed() && !text.holds_literal_breaks());
}

} // namespace

bool constraints_ok(std::string_view line, std::size_t col, std::size_t length,
                    const SearchConstraints& wanted) {
  if (wanted.none()) return col <= line.size();
  if (col > line.size()) return false;
  return constraints_ok({col == 0, col == 0 ? '\0' : line[col - 1]}, line, col, length, wanted);
}

bool constraints_ok(LeftSide left, std::string_view line, std::size_t col, std::size_t length,
                    const SearchConstraints& wanted) {
  if ((wanted.begin && !left.line_start) || (wanted.end && col + length != line.size())) return false;
  if (!wanted.word) return true;
  const auto delimits = [&](char c) { return wanted.delimiters[to_byte(c)]; };
  return (left.line_start || delimits(left.byte)) &&
         (col + length >= line.size() || delimits(line[col + length]));
}

std::optional<Position> search_forward(const LineStore& text, const Pattern& pattern, Position start,
                                       const SearchConstraints& wanted, Abort& abort) {
  if (cannot_match(text, pattern) || start.row >= text.line_count()) return std::nullopt;
  // A column beyond the line's end stands for the next line, whose first byte comes after the break.
  const std::uint64_t length = text.line_length(start.row);
  const std::uint64_t from = text.line_start(start.row) + std::min(start.col, length + 1);
  return ignores_lines(pattern) ? PlainSearch(text, wanted, abort).forward(pattern.plain(), from)
                                : lines_forward(text, pattern, from, wanted, abort);
}

std::optional<Position> search_backward(const LineStore& text, const Pattern& pattern, Position start,
                                        const SearchConstraints& wanted, Abort& abort) {
  if (cannot_match(text, pattern)) return std::nullopt;
  // A row beyond the last line is taken as the last one, the column stays.
  start.row = std::min(start.row, text.line_count() - 1);
  start.col = std::min(start.col, text.line_length(start.row));
  return ignores_lines(pattern)
             ? PlainSearch(text, wanted, abort).backward(pattern.plain(), text.offset_of(start))
             : lines_backward(text, pattern, start, wanted, abort);
}

} // namespace zan
