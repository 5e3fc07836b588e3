#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/piece_tree.h"

namespace zan {

// A place in a text: line and byte in that line, both zero-based. col may equal the line's length.
struct Position {
  std::uint64_t row = 0;
  std::uint64_t col = 0;
  auto operator<=>(const Position&) const = default;
};

// Bytes read from a store: a view into it, or a copy of its own where the bytes lie in several pieces. The
// view is valid as long as some copy of the store holds that text, the copy as long as this object.
class TextView {
 public:
  TextView() = default;
  explicit TextView(std::string_view view) : view_(view) {}
  explicit TextView(std::string copy) : copy_(std::move(copy)), owns_(true) {}
  std::string_view get() const& { return owns_ ? std::string_view(copy_) : view_; }
  std::string_view get() && = delete; // would outlive the copy
  operator std::string_view() const& { return get(); }
  operator std::string_view() && = delete;
  std::size_t size() const { return get().size(); }
  friend bool operator==(const TextView& text, std::string_view bytes) { return text.get() == bytes; }

 private:
  std::string copy_;
  std::string_view view_;
  bool owns_ = false;
};

// No text is longer. What is shared costs no memory, so that only this limits doublings.
inline constexpr std::uint64_t kMostTextBytes = std::uint64_t{1} << 48;

// The lines of one text: a value whose copies share everything that neither has changed.
//
// The text is the lines joined by line breaks, each break counting as one byte; there is always at least one
// line. Offsets are bytes of that joined text. It is kept as a balanced tree of pieces, each a stretch of an
// immutable block (the file as it was read, or an append-only block of typed text), so a fresh load is one
// piece, an edit touches O(log pieces) nodes, and a copy is one pointer. A line feed that stands inside a
// line is an ordinary byte of that line; it lives in a piece marked literal, in which no byte ends a line.
//
// Every operation costs O(log pieces) plus the bytes it is given or returns, unless stated otherwise.
// Offsets beyond the end are clamped to it; rows beyond the last line mean the end of the text.
class LineStore {
 public:
  LineStore() = default;                             // one empty line
  static LineStore from_text(std::string_view text); // copies; each line feed of `text` ends a line
  static LineStore from_line(std::string_view line); // copies; one line, line feeds stay inside it
  static LineStore blanks(std::uint64_t count); // one line; blanks share their bytes: O(log count) memory

  std::uint64_t line_count() const;                // at least 1
  std::uint64_t byte_count() const;                // breaks included
  bool empty() const { return byte_count() == 0; } // exactly one empty line
  std::uint64_t piece_count() const;               // for benchmarks and tests

  std::uint64_t line_start(std::uint64_t row) const;
  std::uint64_t line_end(std::uint64_t row) const; // offset of its break, or of the end of the text
  std::uint64_t line_length(std::uint64_t row) const { return line_end(row) - line_start(row); }
  std::uint64_t offset_of(Position at) const; // col clamped to the line
  Position position_of(std::uint64_t offset) const;

  TextView line(std::uint64_t row) const;                       // "" past the end
  TextView slice(std::uint64_t begin, std::uint64_t end) const; // breaks as line feeds
  char byte_at(std::uint64_t offset) const;                     // offset < byte_count()
  bool ends_with_break() const;
  bool holds_literal_breaks() const; // some line may hold a line feed
  bool may_hold_returns() const;     // false: certainly no carriage return in it
  std::string to_string() const;     // breaks as line feeds

  LineStore substore(std::uint64_t begin, std::uint64_t end) const; // shares the text
  LineStore with_literals_as_breaks() const;                        // line feeds inside lines become breaks

  // Shares the text. Throws std::length_error when there would be more than kMostTextBytes.
  void insert(std::uint64_t offset, const LineStore& text);
  void insert_text(std::uint64_t offset, std::string_view text);   // line feeds become breaks
  void insert_bytes(std::uint64_t offset, std::string_view bytes); // line feeds stay inside the line
  void erase(std::uint64_t begin, std::uint64_t end);

  friend bool operator==(const LineStore& a, const LineStore& b); // same lines; linear

  // The tree itself, for who records or restores texts.
  const NodeRef& tree() const { return root_; }
  static LineStore from_tree(NodeRef tree) { return LineStore(std::move(tree)); }

 private:
  friend class PieceWalker;
  friend class LineStoreBuilder;
  explicit LineStore(NodeRef root) : root_(std::move(root)) {}
  static LineStore copy_of(std::string_view bytes, bool literal);
  void insert_marked(std::uint64_t offset, std::string_view bytes, bool literal);
  bool extend_typed(std::uint64_t offset, std::string_view bytes, bool literal);
  bool trim_piece(std::uint64_t begin, std::uint64_t end);
  Piece new_piece(std::string_view bytes, bool literal);
  void splice(std::uint64_t begin, std::uint64_t end, std::string_view bytes, bool literal);

  NodeRef root_;  // null: one empty line
  BlockRef tail_; // typed text is appended here; copies share it, each refers to what it wrote itself
};

// A stretch of a store that lies contiguously in memory. In a literal one, line feeds are bytes of a line.
struct Chunk {
  std::string_view bytes;
  std::uint64_t offset = 0; // of its first byte in the store
  bool literal = false;
};

// Iterates over the chunks of [begin, end), forward or backward. It has a copy of the store: chunks are valid
// while the walker lives, whatever happens to the original.
class PieceWalker {
 public:
  PieceWalker(const LineStore& store, std::uint64_t begin, std::uint64_t end);
  bool next(Chunk& chunk);     // false at the end; each call costs O(log pieces) at worst, O(1) on average
  bool previous(Chunk& chunk); // from the end towards begin; do not mix with next

 private:
  void seek(std::uint64_t offset, bool forward);
  void push_spine(const Node* node, bool forward);

  LineStore store_;
  std::uint64_t begin_, end_;     // what is still to be visited
  std::vector<const Node*> path_; // nodes still to be visited, each with the subtree beyond it
  std::size_t within_ = 0;        // bytes of the first piece that lie outside the range
  bool started_ = false;
};

// Iterates over the lines from a row on. Lines are views into the text; only a line that spans pieces is
// copied, into one buffer.
class LineWalker {
 public:
  LineWalker(const LineStore& store, std::uint64_t first_row);

  // False after the last line; the view lives until the next call.
  bool next(std::string_view& line) {
    const std::size_t length = chunk_.literal ? std::string_view::npos : chunk_.bytes.find('\n');
    if (length == std::string_view::npos) return next_across_pieces(line);
    line = chunk_.bytes.substr(0, length);
    chunk_.bytes.remove_prefix(length + 1);
    return true;
  }

 private:
  bool next_across_pieces(std::string_view& line);

  PieceWalker pieces_;
  Chunk chunk_; // what is left of the current chunk
  std::string gathered_;
  bool at_end_;
};

// Builds a store from front to back. Long stretches of other stores are shared. Short ones are copied into
// contiguous blocks, so that a text rewritten everywhere is contiguous again.
class LineStoreBuilder {
 public:
  // Line feeds stay inside the line.
  void append_bytes(std::string_view bytes) {
    const bool literal = bytes.find('\n') != std::string_view::npos;
    // Bytes without line feeds are the same in both kinds of piece.
    append_marked(bytes, literal || run_literal_);
  }
  void append_text(std::string_view text) { append_marked(text, false); } // line feeds end lines
  void append_break() { append_text("\n"); }
  void append(const LineStore& source, std::uint64_t begin, std::uint64_t end);
  void append(const LineStore& source) { append(source, 0, source.byte_count()); }
  void append_piece(Piece piece); // shares its block
  LineStore finish();             // leaves the builder empty

 private:
  void append_marked(std::string_view bytes, bool literal) {
    if (literal != run_literal_ || !block_ || block_->free_space() < bytes.size())
      start_run(bytes.size(), literal);
    block_->append(bytes);
  }
  void start_run(std::size_t size, bool literal);
  void flush_run();

  std::vector<Piece> pieces_;
  BlockRef block_;            // the block being filled
  std::size_t run_start_ = 0; // in block_: from here on, bytes that are not in pieces_ yet
  bool run_literal_ = false;
};

} // namespace zan
