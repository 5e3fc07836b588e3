#include "text/line_store.h"

namespace zan {

PieceWalker::PieceWalker(const LineStore& store, std::uint64_t begin, std::uint64_t end)
    : store_(store), begin_(begin), end_(std::min(end, store.byte_count())) {}

// Pushes `node` and its descendants on the side that is visited first.
void PieceWalker::push_spine(const Node* node, bool forward) {
  for (; node != nullptr; node = (forward ? node->left : node->right).get()) path_.push_back(node);
}

// Finds the piece that holds the byte at `offset`; path_ then ends with it.
void PieceWalker::seek(std::uint64_t offset, bool forward) {
  started_ = true;
  for (const Node* node = store_.root_.get(); node != nullptr;) {
    const std::uint64_t start = bytes_of(node->left);
    const std::uint64_t stop = start + node->piece.length;
    if (offset < start) {
      if (forward) path_.push_back(node);
      node = node->left.get();
    } else if (offset >= stop) {
      if (!forward) path_.push_back(node);
      offset -= stop;
      node = node->right.get();
    } else {
      path_.push_back(node);
      within_ = in_memory(forward ? offset - start : stop - 1 - offset);
      return;
    }
  }
}

bool PieceWalker::next(Chunk& chunk) {
  if (begin_ >= end_) return false;
  if (!started_) seek(begin_, true);
  const Node* node = path_.back();
  path_.pop_back();
  chunk.bytes = node->piece.bytes().substr(
      within_, in_memory(std::min<std::uint64_t>(end_ - begin_, node->piece.length)));
  chunk.offset = begin_;
  chunk.literal = node->piece.literal;
  begin_ += chunk.bytes.size();
  within_ = 0;
  push_spine(node->right.get(), true);
  return true;
}

bool PieceWalker::previous(Chunk& chunk) {
  if (begin_ >= end_) return false;
  if (!started_) seek(end_ - 1, false);
  const Node* node = path_.back();
  path_.pop_back();
  const std::size_t available = node->piece.length - within_;
  const std::size_t length = in_memory(std::min<std::uint64_t>(available, end_ - begin_));
  chunk.bytes = node->piece.bytes().substr(available - length, length);
  end_ -= length;
  chunk.offset = end_;
  chunk.literal = node->piece.literal;
  within_ = 0;
  push_spine(node->left.get(), false);
  return true;
}

LineWalker::LineWalker(const LineStore& store, std::uint64_t first_row)
    : pieces_(store, store.line_start(first_row), store.byte_count()),
      at_end_(first_row >= store.line_count()) {}

// The next line where its break is not in the current chunk.
bool LineWalker::next_across_pieces(std::string_view& line) {
  if (at_end_) return false;
  gathered_.clear();
  for (;;) {
    std::string_view head = chunk_.bytes;
    const std::size_t length = chunk_.literal ? std::string_view::npos : head.find('\n');
    if (length != std::string_view::npos) {
      head = head.substr(0, length);
      chunk_.bytes.remove_prefix(length + 1);
    } else if (pieces_.next(chunk_)) {
      gathered_ += head;
      continue;
    } else {
      chunk_ = {};
      at_end_ = true;
    }
    line = gathered_.empty() ? head : std::string_view(gathered_ += head);
    return true;
  }
}

} // namespace zan
