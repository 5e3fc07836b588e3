#include "search/substitution.h"

#include <algorithm>

namespace zan {

namespace {

// A stretch shorter than this is copied rather than shared: cheaper than looking up its pieces.
constexpr std::uint64_t kCopiedStretch = 2048;

// Writes the new text from front to back. Of the line at hand it knows two columns: where the search goes on
// in the old line, and where that is in the new one.
class Rewrite {
 public:
  Rewrite(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted,
          std::string_view replacement, Abort& abort)
      : text_(text), pattern_(pattern), wanted_(wanted), replacement_(replacement), abort_(abort),
        literal_breaks_(text.holds_literal_breaks()) {}

  // `line` begins at offset `line_start` of the text and is searched from column `from` on.
  void begin_line(std::string_view line, std::uint64_t row, std::uint64_t line_start, std::size_t from) {
    line_ = line;
    row_ = row;
    line_start_ = line_start;
    old_col_ = 0;
    new_col_ = 0;
    left_ = {};
    skip_to(from);
  }

  // Replaces the next match in the line. False when the line has no further one.
  bool replace_next() {
    const auto col = next_match();
    if (!col) return false;
    const std::size_t length = pattern_.match_length(line_, *col, abort_);
    if (abort_ != 0) return false;
    skip_to(*col);
    result_.last = {row_, new_col_};
    replace(length);
    if (length > 0) return true;
    if (old_col_ == line_.size()) return false;
    skip_to(old_col_ + 1);
    return true;
  }

  std::uint64_t count() const { return result_.count; }

  Substitution finish() {
    built_.append(text_, copied_, text_.byte_count());
    if (result_.changed) result_.text = built_.finish();
    return std::move(result_);
  }

 private:
  // The first match from old_col_ on that satisfies the constraints.
  std::optional<std::size_t> next_match() const {
    std::size_t at = old_col_;
    while (at <= line_.size()) {
      const auto col =
          pattern_.is_anchored() ? match_at_line_start(at) : pattern_.find_forward(line_, at, abort_);
      if (!col) return std::nullopt;
      const std::size_t length = pattern_.match_length(line_, *col, abort_);
      if (abort_ != 0) return std::nullopt;
      const LeftSide left = *col == old_col_ ? left_ : LeftSide{false, line_[*col - 1]};
      if (constraints_ok(left, line_, *col, length, wanted_)) return col;
      at = *col + std::max<std::size_t>(length, 1);
    }
    return std::nullopt;
  }

  std::optional<std::size_t> match_at_line_start(std::size_t at) const {
    const bool line_start = at == old_col_ && new_col_ == 0;
    return line_start && pattern_.match_at(line_, at, abort_) ? std::optional(at) : std::nullopt;
  }

  // Moves over bytes that stay as they are.
  void skip_to(std::size_t col) {
    if (col > old_col_) left_ = {false, line_[col - 1]};
    new_col_ += col - old_col_;
    old_col_ = col;
  }

  // Puts the replacement in place of `length` bytes.
  void replace(std::size_t length) {
    copy_up_to_here();
    built_.append_bytes(replacement_);
    result_.changed = result_.changed || line_.substr(old_col_, length) != replacement_;
    ++result_.count;
    if (!replacement_.empty()) left_ = {false, replacement_.back()};
    new_col_ += replacement_.size();
    old_col_ += length;
    copied_ = line_start_ + old_col_;
  }

  // Copies what lies between the last replacement and old_col_.
  void copy_up_to_here() {
    if (copied_ < line_start_) {
      if (!literal_breaks_ && line_start_ - copied_ < kCopiedStretch) {
        const TextView stretch = text_.slice(copied_, line_start_);
        built_.append_text(stretch);
      } else {
        built_.append(text_, copied_, line_start_);
      }
      copied_ = line_start_;
    }
    const std::size_t begin = in_memory(copied_ - line_start_);
    built_.append_bytes(line_.substr(begin, old_col_ - begin));
  }

  const LineStore& text_;
  const Pattern& pattern_;
  const SearchConstraints& wanted_;
  std::string_view replacement_;
  Abort& abort_;
  bool literal_breaks_;
  LineStoreBuilder built_;
  Substitution result_;
  std::uint64_t copied_ = 0; // offset up to which built_ holds the text

  std::string_view line_; // the line at hand
  std::uint64_t row_ = 0;
  std::uint64_t line_start_ = 0; // its offset
  std::size_t old_col_ = 0;      // where the search goes on
  std::uint64_t new_col_ = 0;    // the same place in the rewritten line
  LeftSide left_;                // what stands before that place in the rewritten line
};

} // namespace

Substitution substitute(const LineStore& text, const Pattern& pattern, const SearchConstraints& wanted,
                        Position start, std::uint64_t limit, std::string_view replacement, Abort& abort) {
  if (pattern.empty() || start.row >= text.line_count()) return {};
  Rewrite rewrite(text, pattern, wanted, replacement, abort);
  LineWalker walker(text, start.row);
  std::uint64_t row = start.row;
  std::uint64_t offset = text.line_start(row);
  for (std::string_view line; abort == 0 && rewrite.count() < limit && walker.next(line); ++row) {
    const std::uint64_t from = row == start.row ? start.col : 0;
    if (from <= line.size()) {
      rewrite.begin_line(line, row, offset, in_memory(from));
      while (rewrite.count() < limit && rewrite.replace_next()) {}
    }
    offset += line.size() + 1;
  }
  return rewrite.finish();
}

} // namespace zan
