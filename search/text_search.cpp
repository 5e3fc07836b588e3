#include "search/text_search.h"

#include <algorithm>

#include "text/bytes.h"

namespace zan {

namespace {

using Abort = const volatile std::sig_atomic_t;

// The sides of a match that lies at `offset` of the text, without fetching its line.
bool constraints_ok_at(const LineStore& text, std::uint64_t offset, std::uint64_t length,
                       const SearchConstraints& wanted) {
  const Position at = text.position_of(offset);
  const std::uint64_t line_end = offset - at.col + text.line_length(at.row);
  const bool at_end = offset + length == line_end;
  if ((wanted.begin && at.col != 0) || (wanted.end && !at_end)) return false;
  const auto delimits = [&](std::uint64_t place) { return wanted.delimiters[to_byte(text.byte_at(place))]; };
  return !wanted.word || ((at.col == 0 || delimits(offset - 1)) && (at_end || delimits(offset + length)));
}

// A plain string without a line feed cannot match across a line break, so lines need not be told apart: the
// chunks are searched as they lie, and the seams between them in a small window of their own.
class PlainSearch {
 public:
  PlainSearch(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted, Abort& abort)
      : text_(text), needle_(pattern.plain()), folded_(!pattern.is_exact()), wanted_(wanted), abort_(abort) {}

  // Offset of the first occurrence at or after `begin` that satisfies the constraints. One that does not is
  // passed over whole.
  std::optional<std::uint64_t> first_from(std::uint64_t begin) const {
    PieceWalker walker(text_, begin, text_.byte_count());
    std::string seam; // the last bytes before the chunk, fewer than the needle has
    for (Chunk chunk; walker.next(chunk) && abort_ == 0;) {
      const std::string joined = seam + std::string(chunk.bytes.substr(0, needle_.size() - 1));
      const Chunk window{joined, chunk.offset - seam.size(), true};
      if (const auto found = first_in(window, seam.size(), begin)) return found;
      if (const auto found = first_in(chunk, chunk.bytes.size(), begin)) return found;
      keep_last(seam, chunk.bytes);
    }
    return std::nullopt;
  }

  // The last one that ends at or before `end`; likewise.
  std::optional<std::uint64_t> last_until(std::uint64_t end) const {
    PieceWalker walker(text_, 0, end);
    std::string seam; // the first bytes after the chunk
    for (Chunk chunk; walker.previous(chunk) && abort_ == 0;) {
      const std::size_t kept = std::min(chunk.bytes.size(), needle_.size() - 1);
      const std::string joined = std::string(chunk.bytes.substr(chunk.bytes.size() - kept)) + seam;
      const Chunk window{joined, chunk.offset + chunk.bytes.size() - kept, true};
      if (!seam.empty()) {
        if (const auto found = last_in(window, end)) return found;
      }
      if (const auto found = last_in(chunk, end)) return found;
      seam.insert(0, chunk.bytes.substr(0, needle_.size() - 1));
      seam.resize(std::min(seam.size(), needle_.size() - 1));
    }
    return std::nullopt;
  }

 private:
  // Looks at the occurrences that start before `limit` of the chunk and not before the offset `begin`, which
  // is moved beyond those that are passed over.
  std::optional<std::uint64_t> first_in(const Chunk& chunk, std::size_t limit, std::uint64_t& begin) const {
    while (abort_ == 0) {
      const auto from = static_cast<std::size_t>(std::max(begin, chunk.offset) - chunk.offset);
      const std::size_t at = from < limit ? find(chunk.bytes, from) : std::string_view::npos;
      if (at == std::string_view::npos || at >= limit) break;
      if (accepts(chunk, at)) return chunk.offset + at;
      begin = chunk.offset + at + needle_.size();
    }
    return std::nullopt;
  }

  std::optional<std::uint64_t> last_in(const Chunk& chunk, std::uint64_t& end) const {
    while (abort_ == 0 && end > chunk.offset) {
      const auto limit =
          static_cast<std::size_t>(std::min<std::uint64_t>(end - chunk.offset, chunk.bytes.size()));
      const std::size_t at = find_last_bytes(chunk.bytes, needle_, limit, folded_);
      if (at == std::string_view::npos) break;
      if (accepts(chunk, at)) return chunk.offset + at;
      end = chunk.offset + at;
    }
    return std::nullopt;
  }

  // The bytes around the match tell, when they lie in the chunk too and a line feed there ends a line.
  bool accepts(const Chunk& chunk, std::size_t at) const {
    if (wanted_.none()) return true;
    const std::size_t after = at + needle_.size();
    if (chunk.literal || at == 0 || after >= chunk.bytes.size())
      return constraints_ok_at(text_, chunk.offset + at, needle_.size(), wanted_);
    const char left = chunk.bytes[at - 1];
    const char right = chunk.bytes[after];
    if ((wanted_.begin && left != '\n') || (wanted_.end && right != '\n')) return false;
    const auto bounds = [&](char c) { return c == '\n' || wanted_.delimiters[to_byte(c)]; };
    return !wanted_.word || (bounds(left) && bounds(right));
  }

  std::size_t find(std::string_view bytes, std::size_t from) const {
    return folded_ ? find_folded(bytes, needle_, from) : find_bytes(bytes, needle_, from);
  }
  void keep_last(std::string& seam, std::string_view bytes) const {
    const std::size_t wanted = needle_.size() - 1;
    seam.append(bytes.substr(bytes.size() - std::min(bytes.size(), wanted)));
    seam.erase(0, seam.size() - std::min(seam.size(), wanted));
  }

  const LineStore& text_;
  std::string_view needle_;
  bool folded_;
  const SearchConstraints& wanted_;
  Abort& abort_;
};

std::optional<Position> plain_forward(const LineStore& text, const Pattern& pattern, std::uint64_t from,
                                      const SearchConstraints& wanted, Abort& abort) {
  const auto found = PlainSearch(text, pattern, wanted, abort).first_from(from);
  return found ? std::optional(text.position_of(*found)) : std::nullopt;
}

std::optional<Position> plain_backward(const LineStore& text, const Pattern& pattern, std::uint64_t until,
                                       const SearchConstraints& wanted, Abort& abort) {
  const auto found = PlainSearch(text, pattern, wanted, abort).last_until(until);
  return found ? std::optional(text.position_of(*found)) : std::nullopt;
}

// The first match in one line, from a column on, that satisfies the constraints.
std::optional<std::size_t> line_forward(std::string_view line, const Pattern& pattern, std::size_t from,
                                        const SearchConstraints& wanted, Abort& abort) {
  while (const auto col = pattern.find_forward(line, from)) {
    const std::size_t length = pattern.match_length(line, *col);
    if (constraints_ok(line, *col, length, wanted)) return col;
    if (abort != 0) break;
    from = *col + std::max<std::size_t>(length, 1);
  }
  return std::nullopt;
}

std::optional<std::size_t> line_backward(std::string_view line, const Pattern& pattern, std::size_t limit,
                                         const SearchConstraints& wanted, Abort& abort) {
  while (const auto col = pattern.find_backward(line, limit)) {
    if (constraints_ok(line, *col, pattern.match_length(line, *col), wanted)) return col;
    if (*col == 0 || abort != 0) break;
    limit = pattern.is_wildcard() ? *col - 1 : *col;
  }
  return std::nullopt;
}

bool searched_by_pieces(const Pattern& pattern) {
  return !pattern.is_wildcard() && pattern.plain().find('\n') == std::string_view::npos;
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
  if (pattern.empty() || start.row >= text.line_count()) return std::nullopt;
  if (start.col > text.line_length(start.row)) start = {start.row + 1, 0};
  if (start.row >= text.line_count()) return std::nullopt;
  if (searched_by_pieces(pattern)) return plain_forward(text, pattern, text.offset_of(start), wanted, abort);
  LineWalker walker(text, start.row);
  for (std::string_view line; abort == 0 && walker.next(line); start = {start.row + 1, 0})
    if (const auto col = line_forward(line, pattern, start.col, wanted, abort))
      return Position{start.row, *col};
  return std::nullopt;
}

std::optional<Position> search_backward(const LineStore& text, const Pattern& pattern, Position start,
                                        const SearchConstraints& wanted, Abort& abort) {
  if (pattern.empty()) return std::nullopt;
  std::uint64_t row = std::min(start.row, text.line_count() - 1);
  // A row beyond the last line is taken as the last one, the column stays.
  const std::uint64_t limit = std::min(start.col, text.line_length(row));
  if (searched_by_pieces(pattern))
    return plain_backward(text, pattern, text.offset_of({row, limit}), wanted, abort);
  for (std::size_t until = limit; abort == 0; until = static_cast<std::size_t>(text.line_length(row))) {
    const TextView line = text.line(row);
    if (const auto col = line_backward(line, pattern, until, wanted, abort)) return Position{row, *col};
    if (row-- == 0) break;
  }
  return std::nullopt;
}

} // namespace zan
