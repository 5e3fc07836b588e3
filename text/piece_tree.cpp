#include "text/piece_tree.h"

namespace zan {

Piece::Piece(BlockRef of, std::size_t begin, std::size_t end, bool is_literal)
    : block(std::move(of)), start(begin), length(end - begin), literal(is_literal) {
  if (!literal) breaks = block->breaks_in(begin, end);
  returns = bytes().find('\r') != std::string_view::npos;
}

Piece Piece::part(std::size_t from, std::size_t to) const {
  Piece result = *this;
  result.start = start + from;
  result.length = to - from;
  if (breaks > 0) result.breaks = block->breaks_in(start + from, start + to);
  return result;
}

bool Piece::absorb(const Piece& next) {
  if (block != next.block || end() != next.start || literal != next.literal) return false;
  length += next.length;
  breaks += next.breaks;
  returns = returns || next.returns;
  return true;
}

Node::Node(NodeRef l, Piece p, NodeRef r)
    : left(std::move(l)), right(std::move(r)), piece(std::move(p)),
      bytes(bytes_of(left) + piece.length + bytes_of(right)),
      breaks(breaks_of(left) + piece.breaks + breaks_of(right)),
      pieces((left ? left->pieces : 0) + 1 + (right ? right->pieces : 0)),
      height(static_cast<std::uint8_t>(1 + std::max(left ? left->height : 0, right ? right->height : 0))),
      literal((left && left->literal) || piece.literal || (right && right->literal)),
      returns((left && left->returns) || piece.returns || (right && right->returns)) {}

namespace {

int height_of(const NodeRef& tree) { return tree ? tree->height : 0; }

// Siblings may differ in height by two, in an AVL tree by one: half the rotations, hardly more depth.
constexpr int kSlack = 2;

NodeRef make_node(NodeRef left, Piece middle, NodeRef right) {
  return NodeRef(std::make_unique<const Node>(std::move(left), std::move(middle), std::move(right)));
}

// left, middle, right as one tree, for heights that differ by at most kSlack + 1.
NodeRef balance(const NodeRef& left, Piece middle, const NodeRef& right) {
  if (height_of(left) > height_of(right) + kSlack) {
    const NodeRef& inner = left->right;
    if (height_of(left->left) >= height_of(inner))
      return make_node(left->left, left->piece, make_node(inner, std::move(middle), right));
    return make_node(make_node(left->left, left->piece, inner->left), inner->piece,
                     make_node(inner->right, std::move(middle), right));
  }
  if (height_of(right) > height_of(left) + kSlack) {
    const NodeRef& inner = right->left;
    if (height_of(right->right) >= height_of(inner))
      return make_node(make_node(left, std::move(middle), inner), right->piece, right->right);
    return make_node(make_node(left, std::move(middle), inner->left), inner->piece,
                     make_node(inner->right, right->piece, right->right));
  }
  return make_node(left, std::move(middle), right);
}

// The tree without its first piece, which is moved to `first`.
NodeRef remove_first(const NodeRef& tree, Piece& first) {
  if (!tree->left) {
    first = tree->piece;
    return tree->right;
  }
  return balance(remove_first(tree->left, first), tree->piece, tree->right);
}

} // namespace

NodeRef tree_of(Piece piece) { return make_node({}, std::move(piece), {}); }

NodeRef tree_of(std::span<Piece> pieces) {
  if (pieces.empty()) return {};
  const std::size_t middle = pieces.size() / 2;
  NodeRef left = tree_of(pieces.first(middle));
  return make_node(std::move(left), std::move(pieces[middle]), tree_of(pieces.subspan(middle + 1)));
}

NodeRef join(const NodeRef& left, Piece middle, const NodeRef& right) {
  if (height_of(left) > height_of(right) + kSlack)
    return balance(left->left, left->piece, join(left->right, std::move(middle), right));
  if (height_of(right) > height_of(left) + kSlack)
    return balance(join(left, std::move(middle), right->left), right->piece, right->right);
  return make_node(left, std::move(middle), right);
}

NodeRef concat(const NodeRef& left, const NodeRef& right) {
  if (!left) return right;
  if (!right) return left;
  Piece first;
  const NodeRef rest = remove_first(right, first);
  const PlacedPiece last = piece_at(left, left->bytes - 1);
  Piece both = *last.piece;
  if (both.absorb(first)) return join(prefix(left, last.start), std::move(both), rest);
  return join(left, std::move(first), rest);
}

NodeRef prefix(const NodeRef& tree, std::uint64_t offset) {
  if (!tree || offset >= tree->bytes) return tree;
  const std::uint64_t start = bytes_of(tree->left);
  const std::uint64_t stop = start + tree->piece.length;
  if (offset <= start) return prefix(tree->left, offset);
  if (offset < stop) return join(tree->left, tree->piece.part(0, in_memory(offset - start)), {});
  return join(tree->left, tree->piece, prefix(tree->right, offset - stop));
}

NodeRef suffix(const NodeRef& tree, std::uint64_t offset) {
  if (!tree || offset == 0) return tree;
  const std::uint64_t start = bytes_of(tree->left);
  const std::uint64_t stop = start + tree->piece.length;
  if (offset >= stop) return suffix(tree->right, offset - stop);
  if (offset > start)
    return join({}, tree->piece.part(in_memory(offset - start), tree->piece.length), tree->right);
  return join(suffix(tree->left, offset), tree->piece, tree->right);
}

PlacedPiece piece_at(const NodeRef& tree, std::uint64_t offset) {
  std::uint64_t skipped = 0;
  const Node* node = tree.get();
  for (;;) {
    const std::uint64_t start = skipped + bytes_of(node->left);
    if (offset < start) {
      node = node->left.get();
    } else if (offset < start + node->piece.length) {
      return {&node->piece, start};
    } else {
      skipped = start + node->piece.length;
      node = node->right.get();
    }
  }
}

NodeRef with_piece_at(const NodeRef& tree, std::uint64_t offset, Piece piece) {
  const std::uint64_t start = bytes_of(tree->left);
  const std::uint64_t stop = start + tree->piece.length;
  if (offset < start)
    return make_node(with_piece_at(tree->left, offset, std::move(piece)), tree->piece, tree->right);
  if (offset >= stop)
    return make_node(tree->left, tree->piece, with_piece_at(tree->right, offset - stop, std::move(piece)));
  return make_node(tree->left, std::move(piece), tree->right);
}

NodeRef with_literals_as_breaks(const NodeRef& tree) {
  if (!tree || !tree->literal) return tree;
  Piece piece = tree->piece;
  if (piece.literal) piece = Piece(piece.block, piece.start, piece.end(), false);
  return make_node(with_literals_as_breaks(tree->left), std::move(piece),
                   with_literals_as_breaks(tree->right));
}

std::uint64_t breaks_before(const NodeRef& tree, std::uint64_t offset) {
  std::uint64_t breaks = 0;
  for (const Node* node = tree.get(); node != nullptr;) {
    const std::uint64_t start = bytes_of(node->left);
    const Piece& piece = node->piece;
    if (offset <= start) {
      node = node->left.get();
    } else if (offset < start + piece.length) {
      const std::size_t end = piece.start + in_memory(offset - start);
      const std::uint64_t here = piece.breaks == 0 ? 0 : piece.block->breaks_in(piece.start, end);
      return breaks + breaks_of(node->left) + here;
    } else {
      breaks += breaks_of(node->left) + piece.breaks;
      offset -= start + piece.length;
      node = node->right.get();
    }
  }
  return breaks;
}

std::uint64_t offset_after_break(const NodeRef& tree, std::uint64_t nth) {
  std::uint64_t offset = 0;
  const Node* node = tree.get();
  for (;;) {
    const Piece& piece = node->piece;
    const std::uint64_t before = breaks_of(node->left);
    if (nth < before) {
      node = node->left.get();
      continue;
    }
    nth -= before;
    offset += bytes_of(node->left);
    if (nth < piece.breaks) return offset + (piece.block->find_break(piece.start, nth) - piece.start) + 1;
    nth -= piece.breaks;
    offset += piece.length;
    node = node->right.get();
  }
}

} // namespace zan
