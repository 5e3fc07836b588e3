#include "recovery/text_reader.h"

#include <algorithm>

namespace zan {

namespace {

constexpr int kDeepest = 1000; // the trees written are balanced

} // namespace

bool TextReader::read(char tag, EntryReader& entry) {
  if (tag == 'n') return read_node(entry);
  const std::uint64_t block = entry.number();
  const std::uint64_t start = entry.number();
  const std::string_view bytes = entry.text();
  if (tag != 'b' || entry.failed() || bytes.empty() || start > kMostTextBytes) return false;
  bytes_[{block, start}] = bytes;
  return true;
}

bool TextReader::read_node(EntryReader& entry) {
  const std::uint64_t step = entry.number();
  const std::uint64_t number = last_ + step;
  if (step > kMostTextBytes) return false;
  NodeEntry node{
      read_reference_from(number, entry), read_reference_from(number, entry), entry.number() != 0, {}};
  for (std::uint64_t count = entry.number(); count > 0 && !entry.failed(); --count) {
    Run run{entry.number(), 0, 0, 0};
    if (run.source == 0) run.block = entry.number();
    run.offset = entry.number();
    run.length = entry.number();
    if (run.length == 0 || run.length > kMostTextBytes || run.offset > kMostTextBytes) return false;
    node.runs.push_back(run);
  }
  if (entry.failed() || node.runs.empty()) return false;
  last_ = number;
  return nodes_.emplace(number, std::move(node)).second;
}

TextReader::Reference TextReader::read_reference_from(std::uint64_t number, EntryReader& entry) const {
  const std::uint64_t distance = entry.number();
  if (distance == 0) return {};
  if (distance > 1) return {Reference::Kind::node, number - (distance - 1), 0, 0};
  Reference base{Reference::Kind::base, entry.number(), 0, 0};
  base.offset = entry.number();
  base.length = entry.number();
  return base;
}

TextReader::Reference TextReader::read_reference(EntryReader& entry) const {
  return read_reference_from(last_ + 1, entry);
}

// ---- the texts

// Entries that go on where another ends become one block.
TextBuilder::TextBuilder(const TextReader& reader, const std::vector<const LineStore*>& bases)
    : reader_(reader), bases_(bases) {
  for (auto at = reader_.bytes_.begin(); at != reader_.bytes_.end();) {
    const auto [number, start] = at->first;
    std::uint64_t end = start;
    auto last = at;
    for (; last != reader_.bytes_.end() && last->first == std::pair(number, end); ++last)
      end += last->second.size();
    BlockRef block = Block::make(in_memory(end - start));
    for (; at != last; ++at) block->append(at->second);
    blocks_[{number, start}] = std::move(block);
  }
}

std::optional<LineStore> TextBuilder::text_of(const TextReader::Reference& reference) {
  failed_ = false;
  NodeRef tree = tree_of(reference, 0);
  if (failed_) return std::nullopt;
  return LineStore::from_tree(std::move(tree));
}

NodeRef TextBuilder::tree_of(const TextReader::Reference& reference, int depth) {
  using Kind = TextReader::Reference::Kind;
  if (reference.kind == Kind::nothing || failed_) return {};
  if (reference.kind == Kind::base) return of_base(reference.number, reference.offset, reference.length);
  if (const auto found = trees_.find(reference.number); found != trees_.end()) return found->second;
  const auto node = reader_.nodes_.find(reference.number);
  if (node == reader_.nodes_.end() || depth > kDeepest) {
    failed_ = true;
    return {};
  }
  trees_[reference.number] = {}; // one that leads to itself is empty there
  NodeRef tree = joined(tree_of(node->second.left, depth + 1), of_runs(node->second));
  tree = joined(tree, tree_of(node->second.right, depth + 1));
  return trees_[reference.number] = tree;
}

NodeRef TextBuilder::joined(const NodeRef& left, const NodeRef& right) {
  if (bytes_of(left) + bytes_of(right) > kMostTextBytes) failed_ = true;
  return failed_ ? NodeRef() : concat(left, right);
}

NodeRef TextBuilder::of_base(std::uint64_t base, std::uint64_t offset, std::uint64_t length) {
  if (base >= bases_.size()) {
    failed_ = true;
    return {};
  }
  const LineStore* const text = bases_[static_cast<std::size_t>(base)];
  if (text == nullptr) {
    missing_.insert(base);
    return {};
  }
  if (offset > text->byte_count() || length > text->byte_count() - offset) failed_ = true;
  return failed_ ? NodeRef() : text->substore(offset, offset + length).tree();
}

NodeRef TextBuilder::of_block(const TextReader::Run& run, bool literal) {
  const auto after = blocks_.upper_bound({run.block, run.offset});
  if (after == blocks_.begin() || std::prev(after)->first.first != run.block) {
    failed_ = true;
    return {};
  }
  const BlockRef& block = std::prev(after)->second;
  const std::uint64_t begin = run.offset - std::prev(after)->first.second;
  if (begin > block->used() || run.length > block->used() - begin) failed_ = true;
  if (failed_) return {};
  return zan::tree_of(Piece(block, in_memory(begin), in_memory(begin + run.length), literal));
}

NodeRef TextBuilder::of_runs(const TextReader::NodeEntry& node) {
  NodeRef tree;
  for (const TextReader::Run& run : node.runs)
    tree = joined(tree, run.source == 0 ? of_block(run, node.literal)
                                        : of_base(run.source - 1, run.offset, run.length));
  return tree;
}

} // namespace zan
