#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "text/block.h"

namespace zan {

// A stretch of a block. Never empty.
struct Piece {
  BlockRef block;
  std::size_t start = 0; // in the block
  std::size_t length = 0;
  std::uint64_t breaks = 0; // line feeds that end a line: all of them, or none in a literal piece
  bool literal = false;
  bool returns = false; // false: no carriage return stands in it

  Piece() = default;
  Piece(BlockRef of, std::size_t begin, std::size_t end, bool is_literal); // reads the bytes

  std::size_t end() const { return start + length; }
  std::string_view bytes() const { return block->view(start, length); }
  Piece part(std::size_t from, std::size_t to) const; // from < to, relative to the piece
  bool absorb(const Piece& next); // appends one that continues this one in its block; false: it does not
};

struct Node;
using NodeRef = Ref<const Node>;

// A node of a height-balanced tree of pieces, in the order of the text. Nodes are immutable: an edit copies
// the nodes of one path and shares the rest. The null reference is the empty tree.
struct Node {
  Node(NodeRef l, Piece p, NodeRef r);

  NodeRef left;
  NodeRef right;
  [[no_unique_address]] Piece piece; // what it leaves unused of its last word the next members fill
  mutable std::uint32_t number = 0;  // whoever records texts gives it one
  std::uint64_t bytes;               // this and the next two: of the whole subtree
  std::uint64_t breaks;
  std::uint64_t pieces;
  mutable std::uint32_t refs = 0;
  std::uint8_t height;
  bool literal; // some piece is
  bool returns; // some piece may hold one
};

inline std::uint64_t bytes_of(const NodeRef& tree) { return tree ? tree->bytes : 0; }
inline std::uint64_t breaks_of(const NodeRef& tree) { return tree ? tree->breaks : 0; }

NodeRef tree_of(Piece piece);
NodeRef tree_of(std::span<Piece> pieces); // in that order; moves them out; linear
NodeRef join(const NodeRef& left, Piece middle, const NodeRef& right);
// Where the last piece of `left` goes on in the first of `right`, they become one.
NodeRef concat(const NodeRef& left, const NodeRef& right);
NodeRef prefix(const NodeRef& tree, std::uint64_t offset); // what lies before `offset`
NodeRef suffix(const NodeRef& tree, std::uint64_t offset); // what lies from `offset` on

// The piece that holds the byte at `offset`, which must be in the tree, and the offset of its first byte.
struct PlacedPiece {
  const Piece* piece;
  std::uint64_t start;
};
PlacedPiece piece_at(const NodeRef& tree, std::uint64_t offset);

// The tree with `piece` in place of the one that holds the byte at `offset`.
NodeRef with_piece_at(const NodeRef& tree, std::uint64_t offset, Piece piece);
NodeRef with_literals_as_breaks(const NodeRef& tree); // literal pieces become ordinary ones

std::uint64_t breaks_before(const NodeRef& tree, std::uint64_t offset);   // offset at most the size
std::uint64_t offset_after_break(const NodeRef& tree, std::uint64_t nth); // nth counts from 0, must exist

// Calls visit(piece, from, to) for each piece with bytes in [begin, end), in order; from < to are relative to
// the piece.
template <typename Visit>
void visit_pieces(const NodeRef& tree, std::uint64_t begin, std::uint64_t end, Visit&& visit) {
  if (!tree || begin >= end || begin >= tree->bytes) return;
  const std::uint64_t start = bytes_of(tree->left);
  const std::uint64_t stop = start + tree->piece.length;
  if (begin < start) visit_pieces(tree->left, begin, std::min(end, start), visit);
  if (begin < stop && end > start)
    visit(tree->piece, in_memory(std::max(begin, start) - start), in_memory(std::min(end, stop) - start));
  if (end > stop) visit_pieces(tree->right, std::max(begin, stop) - stop, end - stop, visit);
}

} // namespace zan
