#include "text/line_store.h"

namespace zan {

namespace {

constexpr std::size_t kFirstBlock = 512; // later blocks double
constexpr std::size_t kLastBlock = 16 * 1024 * 1024;
constexpr std::size_t kShareFrom = 1024; // shorter ones are copied: a node takes a tenth of this

} // namespace

void LineStoreBuilder::append(const LineStore& source, std::uint64_t begin, std::uint64_t end) {
  visit_pieces(source.root_, begin, end, [&](const Piece& piece, std::size_t from, std::size_t to) {
    if (to - from >= kShareFrom) {
      append_piece(piece.part(from, to));
    } else {
      append_marked(piece.bytes().substr(from, to - from), piece.literal);
    }
  });
}

void LineStoreBuilder::append_piece(Piece piece) {
  flush_run();
  if (!pieces_.empty() && pieces_.back().absorb(piece)) return;
  pieces_.push_back(std::move(piece));
}

// A run is the bytes of one piece to be made: of one kind, in one block. Starts one with space for `size`.
void LineStoreBuilder::start_run(std::size_t size, bool literal) {
  flush_run();
  run_literal_ = literal;
  if (block_ && block_->free_space() >= size) return;
  const std::size_t doubled = std::clamp(block_ ? 2 * block_->capacity() : 0, kFirstBlock, kLastBlock);
  block_ = Block::make(std::max(size, doubled));
  run_start_ = 0;
}

// Counts the line feeds of the run at once, which is far cheaper than per append.
void LineStoreBuilder::flush_run() {
  if (!block_ || block_->used() == run_start_) return;
  const std::size_t begin = std::exchange(run_start_, block_->used());
  pieces_.push_back(Piece(block_, begin, run_start_, run_literal_));
}

LineStore LineStoreBuilder::finish() {
  flush_run();
  LineStore result(tree_of(std::span(pieces_)));
  *this = {};
  return result;
}

} // namespace zan
