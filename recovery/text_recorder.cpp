#include "recovery/text_recorder.h"

#include <algorithm>

namespace zan {

void TextRecorder::add_base(std::uint32_t base, const LineStore& text) {
  BaseNodes nodes{base, next_.node, {}};
  add_base_nodes(text.tree(), 0, nodes);
  if (!nodes.offsets.empty()) bases_.push_back(std::move(nodes));
}

// Where a node or a stretch occurs twice, one place will do.
void TextRecorder::add_base_nodes(const NodeRef& tree, std::uint64_t offset, BaseNodes& nodes) {
  if (!tree || is_known(*tree) || !has_numbers_left()) return;
  add_base_nodes(tree->left, offset, nodes);
  const std::uint64_t start = offset + bytes_of(tree->left);
  const Piece& piece = tree->piece;
  add_base_nodes(tree->right, start + piece.length, nodes);
  tree->number = next_.node++;
  nodes.offsets.push_back(offset);
  Extents& extents = extents_of(*piece.block);
  for (std::size_t at = piece.start; at < piece.end();) {
    const auto after = extents.upper_bound(at);
    const bool covered = after != extents.begin() && std::prev(after)->second.end > at;
    const std::size_t gap_end =
        after == extents.end() ? piece.end() : std::min<std::size_t>(after->first, piece.end());
    const std::size_t end = covered ? std::prev(after)->second.end : gap_end;
    if (!covered) extents[at] = {end, nodes.base, start + (at - piece.start)};
    at = end;
  }
}

const TextRecorder::BaseNodes* TextRecorder::base_of(std::uint32_t number) const {
  const auto after = std::ranges::upper_bound(bases_, number, {}, &BaseNodes::first);
  if (after == bases_.begin()) return nullptr;
  const BaseNodes& nodes = *std::prev(after);
  return number - nodes.first < nodes.offsets.size() ? &nodes : nullptr;
}

TextRecorder::Extents& TextRecorder::extents_of(const Block& block) {
  if (block.number < first_.block || block.number >= next_.block) block.number = next_.block++;
  return blocks_[block.number];
}

// Children before their parents. The path from the root is found again with every call: it is short.
bool TextRecorder::record(const LineStore& text, std::size_t most, EntryWriter& entries) {
  std::vector<const Node*> path;
  const auto go_to = [&](const NodeRef& node) {
    if (!node || is_known(*node)) return false;
    path.push_back(node.get());
    return true;
  };
  go_to(text.tree());
  while (!path.empty() && has_numbers_left()) {
    const Node& node = *path.back();
    if (go_to(node.left) || go_to(node.right)) continue;
    if (entries.bytes().size() >= most || !record_bytes(node.piece, most, entries)) return false;
    record_node(node, entries);
    path.pop_back();
  }
  return path.empty();
}

// False when some are still missing.
bool TextRecorder::record_bytes(const Piece& piece, std::size_t most, EntryWriter& entries) {
  Extents& extents = extents_of(*piece.block);
  for (std::size_t at = piece.start; at < piece.end();) {
    auto after = extents.upper_bound(at);
    const auto before = after == extents.begin() ? extents.end() : std::prev(after);
    if (before != extents.end() && before->second.end > at) {
      at = before->second.end;
      continue;
    }
    if (entries.bytes().size() >= most) return false;
    std::size_t end = after == extents.end() ? piece.end() : std::min<std::size_t>(after->first, piece.end());
    end = std::min(end, at + (most - entries.bytes().size()));
    entries.tag('b');
    entries.number(piece.block->number - first_.block);
    entries.number(at);
    entries.text(piece.block->view(at, end - at));
    const bool goes_on =
        before != extents.end() && before->second.end == at && before->second.source == kBlock;
    if (goes_on) before->second.end = end;
    else extents[at] = {end, kBlock, at};
    at = end;
  }
  return true;
}

void TextRecorder::record_node(const Node& node, EntryWriter& entries) {
  node.number = next_.node++;
  entries.tag('n');
  entries.number(node.number - first_.node - last_written_);
  last_written_ = node.number - first_.node;
  put_reference(node.left.get(), node.number, entries);
  put_reference(node.right.get(), node.number, entries);
  entries.number(node.piece.literal ? 1 : 0);
  put_runs(node.piece, entries);
}

void TextRecorder::put_runs(const Piece& piece, EntryWriter& entries) {
  const Extents& extents = extents_of(*piece.block);
  EntryWriter runs;
  std::uint64_t count = 0;
  auto extent = std::prev(extents.upper_bound(piece.start));
  for (std::size_t at = piece.start; at < piece.end(); ++extent, ++count) {
    const std::size_t end = std::min<std::size_t>(extent->second.end, piece.end());
    const bool in_block = extent->second.source == kBlock;
    runs.number(in_block ? 0 : extent->second.source + 1);
    if (in_block) runs.number(piece.block->number - first_.block);
    runs.number(extent->second.offset + (at - extent->first));
    runs.number(end - at);
    at = end;
  }
  entries.number(count);
  entries.raw(runs.bytes());
}

void TextRecorder::put_reference(const Node* node, std::uint32_t from, EntryWriter& entries) const {
  if (node == nullptr) {
    entries.number(0);
  } else if (const BaseNodes* nodes = base_of(node->number)) {
    entries.number(1);
    entries.number(nodes->base);
    entries.number(nodes->offsets[node->number - nodes->first]);
    entries.number(node->bytes);
  } else {
    entries.number(from - node->number + 1);
  }
}

void TextRecorder::refer_to(const LineStore& text, EntryWriter& entries) const {
  put_reference(text.tree().get(), next_.node, entries);
}

} // namespace zan
