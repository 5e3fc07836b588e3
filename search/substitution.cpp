#include "search/substitution.h"

#include <algorithm>

namespace zan {

namespace {

// A stretch shorter than this is copied rather than shared: cheaper than looking up its pieces.
constexpr std::uint64_t kCopiedStretch = 2048;

class Pass {
 public:
  Pass(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted,
       std::string_view replacement, Abort& abort)
      : text_(text), pattern_(pattern), wanted_(wanted), replacement_(replacement), abort_(abort),
        plain_breaks_(!text.holds_literal_breaks()) {}

  // The line that begins at `line_start`, from `from` on.
  void run_line(std::string_view line, std::uint64_t row, std::uint64_t line_start, std::size_t from,
                std::uint64_t limit) {
    from_ = from;
    column_ = from;
    left_ = {from == 0, from == 0 ? '\0' : line[from - 1]};
    while (result_.count < limit) {
      const auto col = next_match(line);
      if (!col) return;
      const std::size_t length = pattern_.match_length(line, *col, abort_);
      if (abort_ != 0) return;
      result_.last = {row, column_ + (*col - from_)};
      replace(line, line_start, *col, length);
      if (length == 0 && !step_over(line)) return;
    }
  }

  std::uint64_t count() const { return result_.count; }

  Substitution finish() {
    built_.append(text_, copied_, text_.byte_count());
    if (result_.changed) result_.text = built_.finish();
    return std::move(result_);
  }

 private:
  // The first match at or after from_ that satisfies the constraints.
  std::optional<std::size_t> next_match(std::string_view line) const {
    std::size_t at = from_;
    while (at <= line.size()) {
      const auto col =
          pattern_.is_anchored() ? match_at_line_start(line, at) : pattern_.find_forward(line, at, abort_);
      if (!col) return std::nullopt;
      const std::size_t length = pattern_.match_length(line, *col, abort_);
      if (abort_ != 0) return std::nullopt;
      const LeftSide left = *col == from_ ? left_ : LeftSide{false, line[*col - 1]};
      if (constraints_ok(left, line, *col, length, wanted_)) return col;
      at = *col + std::max<std::size_t>(length, 1);
    }
    return std::nullopt;
  }

  std::optional<std::size_t> match_at_line_start(std::string_view line, std::size_t at) const {
    const bool line_start = at == from_ && column_ == 0;
    return line_start && pattern_.match_at(line, at, abort_) ? std::optional(at) : std::nullopt;
  }

  void replace(std::string_view line, std::uint64_t line_start, std::size_t col, std::size_t length) {
    copy_until(line, line_start, col);
    built_.append_bytes(replacement_);
    copied_ = line_start + col + length;
    result_.changed = result_.changed || line.substr(col, length) != replacement_;
    ++result_.count;
    const std::size_t kept = col - from_;
    if (kept > 0) left_ = {false, line[col - 1]};
    if (!replacement_.empty()) left_ = {false, replacement_.back()};
    column_ += kept + replacement_.size();
    from_ = col + length;
  }

  // Goes one byte further after an empty match. False at the line's end.
  bool step_over(std::string_view line) {
    if (from_ >= line.size()) return false;
    left_ = {false, line[from_]};
    ++from_;
    ++column_;
    return true;
  }

  // Takes over what lies between the last replacement and column `col` of the line.
  void copy_until(std::string_view line, std::uint64_t line_start, std::size_t col) {
    if (copied_ < line_start) {
      if (plain_breaks_ && line_start - copied_ < kCopiedStretch)
        built_.append_text(text_.slice(copied_, line_start));
      else built_.append(text_, copied_, line_start);
      copied_ = line_start;
    }
    const std::size_t begin = static_cast<std::size_t>(copied_ - line_start);
    built_.append_bytes(line.substr(begin, col - begin));
  }

  const LineStore& text_;
  const Pattern& pattern_;
  const SearchConstraints& wanted_;
  std::string_view replacement_;
  Abort& abort_;
  bool plain_breaks_;
  LineStoreBuilder built_;
  Substitution result_;
  std::uint64_t copied_ = 0; // offset up to which the text has been taken over
  // In the line at hand: where the search goes on, its column in the new line, and what stands before it
  // there.
  std::size_t from_ = 0;
  std::uint64_t column_ = 0;
  LeftSide left_;
};

} // namespace

Substitution substitute(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted,
                        Position start, std::uint64_t limit, std::string_view replacement, Abort& abort) {
  Pass pass(text, pattern, wanted, replacement, abort);
  if (pattern.empty() || start.row >= text.line_count()) return {};
  LineWalker walker(text, start.row);
  std::uint64_t row = start.row;
  std::uint64_t offset = text.line_start(row);
  for (std::string_view line; abort == 0 && pass.count() < limit && walker.next(line); ++row) {
    const std::uint64_t from = row == start.row ? start.col : 0;
    if (from <= line.size()) pass.run_line(line, row, offset, static_cast<std::size_t>(from), limit);
    offset += line.size() + 1;
  }
  return pass.finish();
}

} // namespace zan
