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
  for (Gap gap = first_gap(extents, piece.start, piece.end()); !gap.empty();
       gap = first_gap(extents, gap.end, piece.end()))
    extents[gap.begin] = {gap.end, nodes.base, start + (gap.begin - piece.start)};
}

TextRecorder::Gap TextRecorder::first_gap(const Extents& extents, std::size_t begin, std::size_t end) {
  auto next = extents.upper_bound(begin);
  if (next != extents.begin()) begin = std::max(begin, std::prev(next)->second.end);
  for (; next != extents.end() && next->first == begin; ++next) begin = next->second.end;
  if (begin >= end) return {end, end};
  return {begin, next == extents.end() ? end : std::min(next->first, end)};
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
  for (Gap gap = first_gap(extents, piece.start, piece.end()); !gap.empty();
       gap = first_gap(extents, gap.end, piece.end())) {
    if (entries.bytes().size() >= most) return false;
    gap.end = std::min(gap.end, gap.begin + (most - entries.bytes().size()));
    entries.tag('b');
    entries.number(piece.block->number - first_.block);
    entries.number(gap.begin);
    entries.text(piece.block->view(gap.begin, gap.end - gap.begin));
    add_written(gap, extents);
  }
  return true;
}

// Stretches that were written one behind the other are one extent.
void TextRecorder::add_written(Gap written, Extents& extents) {
  const auto after = extents.lower_bound(written.begin);
  if (after != extents.begin()) {
    Extent& before = std::prev(after)->second;
    if (before.end == written.begin && before.source == kBlock) {
      before.end = written.end;
      return;
    }
  }
  extents[written.begin] = {written.end, kBlock, written.begin};
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
