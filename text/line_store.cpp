#include "text/line_store.h"

#include <stdexcept>

namespace zan {

namespace {

// Typed text goes to blocks that double from the first size to the last; longer insertions get their own
// block.
constexpr std::size_t kFirstTailBlock = 1024;
constexpr std::size_t kLastTailBlock = 64 * 1024;
constexpr std::size_t kOwnBlock = kLastTailBlock / 2;

// An edit that leaves so many neighbouring pieces within so many bytes merges them into one. That keeps the
// average piece at some hundred bytes however scattered the edits are. Merge runs, not pairs: an edit adds
// two pieces at most, so copying stays amortised constant, and typing between two short pieces copies
// nothing.
constexpr std::uint64_t kMergePieces = 4;
constexpr std::uint64_t kMergeBytes = 1024;

// Stores up to this size are copied when inserted: that extends the piece typed before them instead of adding
// pieces.
constexpr std::uint64_t kCopyBytes = 256;

bool contains(std::string_view bytes, char c) { return bytes.find(c) != std::string_view::npos; }

// Neighbouring pieces of one kind. The rest of a piece that an edit cuts counts as one.
struct SmallRun {
  std::uint64_t pieces = 0;
  std::uint64_t bytes = 0;
};

// The run that ends at `offset`, of at most `limit` bytes.
SmallRun run_before(const NodeRef& tree, std::uint64_t offset, bool literal, std::uint64_t limit) {
  SmallRun run;
  const std::uint64_t begin = offset - std::min(offset, limit);
  visit_pieces(tree, begin, offset, [&](const Piece& piece, std::size_t from, std::size_t to) {
    if (from > 0 || piece.literal != literal) {
      run = {};
    } else {
      ++run.pieces;
      run.bytes += to;
    }
  });
  return run;
}

// The run that begins at `offset`, of at most `limit` bytes.
SmallRun run_after(const NodeRef& tree, std::uint64_t offset, bool literal, std::uint64_t limit) {
  SmallRun run;
  bool stopped = false;
  visit_pieces(tree, offset, offset + limit, [&](const Piece& piece, std::size_t from, std::size_t to) {
    stopped = stopped || to < piece.length || piece.literal != literal;
    if (stopped) return;
    ++run.pieces;
    run.bytes += to - from;
  });
  return run;
}

void gather(const NodeRef& tree, std::uint64_t begin, std::uint64_t end, std::string& into) {
  visit_pieces(tree, begin, end, [&](const Piece& piece, std::size_t from, std::size_t to) {
    into += piece.bytes().substr(from, to - from);
  });
}

} // namespace

// A store that holds `bytes` and no byte more.
LineStore LineStore::copy_of(std::string_view bytes, bool literal) {
  if (bytes.empty()) return {};
  BlockRef block = Block::make(bytes.size());
  block->append(bytes);
  return LineStore(tree_of(Piece(std::move(block), 0, bytes.size(), literal)));
}

LineStore LineStore::from_text(std::string_view text) { return copy_of(text, false); }
LineStore LineStore::from_line(std::string_view line) { return copy_of(line, contains(line, '\n')); }

LineStore LineStore::blanks(std::uint64_t count) {
  constexpr std::uint64_t kOwnBytes = 65536;
  LineStore text = from_line(std::string(static_cast<std::size_t>(std::min(count, kOwnBytes)), ' '));
  while (text.byte_count() < count) text.insert(0, text.substore(0, count - text.byte_count()));
  return text;
}

// ---- places

std::uint64_t LineStore::line_count() const { return breaks_of(root_) + 1; }
std::uint64_t LineStore::byte_count() const { return bytes_of(root_); }
std::uint64_t LineStore::piece_count() const { return root_ ? root_->pieces : 0; }

std::uint64_t LineStore::line_start(std::uint64_t row) const {
  if (row == 0) return 0;
  return row < line_count() ? offset_after_break(root_, row - 1) : byte_count();
}

std::uint64_t LineStore::line_end(std::uint64_t row) const {
  return row < line_count() - 1 ? offset_after_break(root_, row) - 1 : byte_count();
}

std::uint64_t LineStore::offset_of(Position at) const {
  const std::uint64_t start = line_start(at.row);
  return start + std::min(at.col, line_end(at.row) - start);
}

Position LineStore::position_of(std::uint64_t offset) const {
  offset = std::min(offset, byte_count());
  const std::uint64_t row = breaks_before(root_, offset);
  return {row, offset - line_start(row)};
}

// ---- reading

TextView LineStore::line(std::uint64_t row) const {
  return row < line_count() ? slice(line_start(row), line_end(row)) : TextView();
}

TextView LineStore::slice(std::uint64_t begin, std::uint64_t end) const {
  end = std::min(end, byte_count());
  if (begin >= end) return {};
  const PlacedPiece at = piece_at(root_, begin);
  if (end <= at.start + at.piece->length)
    return TextView(at.piece->bytes().substr(in_memory(begin - at.start), in_memory(end - begin)));
  std::string gathered;
  gathered.reserve(in_memory(end - begin));
  gather(root_, begin, end, gathered);
  return TextView(std::move(gathered));
}

std::string LineStore::to_string() const {
  std::string bytes;
  bytes.reserve(in_memory(byte_count()));
  gather(root_, 0, byte_count(), bytes);
  return bytes;
}

char LineStore::byte_at(std::uint64_t offset) const {
  const PlacedPiece at = piece_at(root_, offset);
  return at.piece->bytes()[in_memory(offset - at.start)];
}

bool LineStore::ends_with_break() const {
  if (!root_) return false;
  const Piece& last = *piece_at(root_, root_->bytes - 1).piece;
  return !last.literal && last.bytes().back() == '\n';
}

bool LineStore::holds_literal_breaks() const { return root_ && root_->literal; }
bool LineStore::may_hold_returns() const { return root_ && root_->returns; }

bool operator==(const LineStore& a, const LineStore& b) {
  if (a.root_ == b.root_) return true;
  if (a.byte_count() != b.byte_count() || a.line_count() != b.line_count()) return false;
  PieceWalker walker_a(a, 0, a.byte_count());
  PieceWalker walker_b(b, 0, b.byte_count());
  Chunk chunk_a;
  Chunk chunk_b;
  for (;;) {
    if (chunk_a.bytes.empty() && !walker_a.next(chunk_a)) return true;
    if (chunk_b.bytes.empty() && !walker_b.next(chunk_b)) return true;
    const std::size_t common = std::min(chunk_a.bytes.size(), chunk_b.bytes.size());
    const std::string_view bytes = chunk_a.bytes.substr(0, common);
    if (bytes != chunk_b.bytes.substr(0, common)) return false;
    if (chunk_a.literal != chunk_b.literal && contains(bytes, '\n')) return false;
    chunk_a.bytes.remove_prefix(common);
    chunk_b.bytes.remove_prefix(common);
  }
}

LineStore LineStore::substore(std::uint64_t begin, std::uint64_t end) const {
  if (begin >= end) return {};
  return LineStore(suffix(prefix(root_, end), begin));
}

LineStore LineStore::with_literals_as_breaks() const {
  LineStore result = *this;
  result.root_ = zan::with_literals_as_breaks(root_);
  return result;
}

// ---- edits

void LineStore::insert(std::uint64_t offset, const LineStore& text) {
  if (text.byte_count() > kMostTextBytes - byte_count()) throw std::length_error("text too long");
  offset = std::min(offset, byte_count());
  if (text.byte_count() <= kCopyBytes) {
    PieceWalker walker(text, 0, text.byte_count());
    for (Chunk chunk; walker.next(chunk); offset += chunk.bytes.size())
      insert_marked(offset, chunk.bytes, chunk.literal);
    return;
  }
  root_ = concat(concat(prefix(root_, offset), text.root_), suffix(root_, offset));
}

void LineStore::insert_text(std::uint64_t offset, std::string_view text) {
  insert_marked(offset, text, false);
}

void LineStore::insert_bytes(std::uint64_t offset, std::string_view bytes) {
  insert_marked(offset, bytes, contains(bytes, '\n'));
}

void LineStore::insert_marked(std::uint64_t offset, std::string_view bytes, bool literal) {
  if (bytes.empty()) return;
  offset = std::min(offset, byte_count());
  if (!extend_typed(offset, bytes, literal)) splice(offset, offset, bytes, literal);
}

// Typing: when the piece before `offset` ends where the used part of the tail block ends, it just grows. If
// another copy of this store appended first, its end differs from used(), and we splice instead.
bool LineStore::extend_typed(std::uint64_t offset, std::string_view bytes, bool literal) {
  if (offset == 0 || !tail_ || tail_->free_space() < bytes.size()) return false;
  const PlacedPiece at = piece_at(root_, offset - 1);
  Piece piece = *at.piece;
  if (at.start + piece.length != offset || piece.block != tail_ || piece.end() != tail_->used()) return false;
  if (piece.literal != literal) return false;
  tail_->append(bytes);
  piece.length += bytes.size();
  if (!literal) piece.breaks += count_breaks(bytes);
  piece.returns = piece.returns || contains(bytes, '\r');
  root_ = with_piece_at(root_, offset - 1, std::move(piece));
  return true;
}

// Writes `bytes`, which are not empty, to a block.
Piece LineStore::new_piece(std::string_view bytes, bool literal) {
  BlockRef block = tail_;
  if (!tail_ || tail_->free_space() < bytes.size()) {
    if (bytes.size() >= kOwnBlock) {
      block = Block::make(bytes.size());
    } else {
      const std::size_t doubled = tail_ ? 2 * tail_->capacity() : 0;
      tail_ = Block::make(std::max(bytes.size(), std::clamp(doubled, kFirstTailBlock, kLastTailBlock)));
      block = tail_;
    }
  }
  const std::size_t start = block->used();
  block->append(bytes);
  return Piece(std::move(block), start, start + bytes.size(), literal);
}

void LineStore::erase(std::uint64_t begin, std::uint64_t end) {
  end = std::min(end, byte_count());
  if (begin >= end || trim_piece(begin, end)) return;
  splice(begin, end, {}, begin > 0 && piece_at(root_, begin - 1).piece->literal);
}

// Erases [begin, end) where that only shortens one piece at one of its ends, as erasing what was just typed
// does.
bool LineStore::trim_piece(std::uint64_t begin, std::uint64_t end) {
  const PlacedPiece at = piece_at(root_, begin);
  const std::size_t length = at.piece->length;
  if (end - at.start > length) return false;
  const std::size_t from = in_memory(begin - at.start);
  const std::size_t to = in_memory(end - at.start);
  if ((from == 0) == (to == length)) return false;
  root_ = with_piece_at(root_, begin, from == 0 ? at.piece->part(to, length) : at.piece->part(0, from));
  return true;
}

// Puts `bytes` in place of [begin, end). A run of many small pieces around them is copied into their piece.
void LineStore::splice(std::uint64_t begin, std::uint64_t end, std::string_view bytes, bool literal) {
  const std::uint64_t limit = kMergeBytes - std::min<std::uint64_t>(bytes.size(), kMergeBytes);
  const SmallRun before = run_before(root_, begin, literal, limit);
  const SmallRun after = run_after(root_, end, literal, limit - before.bytes);
  std::string merged;
  if (before.pieces + (bytes.empty() ? 0 : 1) + after.pieces >= kMergePieces) {
    gather(root_, begin - before.bytes, begin, merged);
    merged += bytes;
    gather(root_, end, end + after.bytes, merged);
    begin -= before.bytes;
    end += after.bytes;
    bytes = merged;
  }
  const NodeRef left = prefix(root_, begin);
  const NodeRef right = suffix(root_, end);
  root_ = bytes.empty() ? concat(left, right) : join(left, new_piece(bytes, literal), right);
}

} // namespace zan
