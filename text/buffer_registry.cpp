#include "text/buffer_registry.h"

#include <functional>
#include <memory>
#include <utility>

#include "text/bytes.h"

namespace zan {

namespace {

std::uint64_t rank_of(std::string_view name) {
  return std::hash<std::string_view>{}(name)*0x9e3779b97f4a7c15U;
}

} // namespace

const TextBuffer* BufferRegistry::find(std::string_view name) const {
  const Node* node = root_.get();
  while (node != nullptr && node->name != name) node = (name < node->name ? node->left : node->right).get();
  return node == nullptr ? nullptr : &node->buffer;
}

TextBuffer& BufferRegistry::entry(std::string_view name) { return entry_in(root_, name, rank_of(name)); }

TextBuffer& BufferRegistry::entry_in(NodeRef& tree, std::string_view name, std::uint64_t rank) {
  if (tree && tree->name == name) return own(tree).buffer;
  if (tree && tree->rank >= rank) {
    Node& node = own(tree);
    return entry_in(name < node.name ? node.left : node.right, name, rank);
  }
  auto node = std::make_unique<Node>();
  node->name = name;
  node->rank = rank;
  split(std::exchange(tree, {}), name, node->left, node->right);
  tree = NodeRef(std::move(node));
  return tree->buffer;
}

void BufferRegistry::erase(std::string_view name) {
  if (find(name) == nullptr) return;
  NodeRef* tree = &root_;
  while ((*tree)->name != name) {
    Node& node = own(*tree);
    tree = name < node.name ? &node.left : &node.right;
  }
  *tree = merge((*tree)->left, (*tree)->right);
}

std::vector<BufferRegistry::Entry> BufferRegistry::entries() const {
  std::vector<Entry> result;
  std::vector<const Node*> path;
  for (const Node* node = root_.get(); node != nullptr || !path.empty();) {
    if (node != nullptr) {
      path.push_back(node);
      node = node->left.get();
    } else {
      node = path.back();
      path.pop_back();
      result.push_back({node->name, node->buffer});
      node = node->right.get();
    }
  }
  return result;
}

BufferRegistry::Node& BufferRegistry::own(NodeRef& tree) {
  if (tree->refs > 1) {
    auto copy = std::make_unique<Node>(*tree);
    copy->refs = 0;
    tree = NodeRef(std::move(copy));
  }
  return *tree;
}

// `name` itself is not in the tree.
void BufferRegistry::split(NodeRef tree, std::string_view name, NodeRef& below, NodeRef& above) {
  if (!tree) return;
  Node& node = own(tree);
  if (node.name < name) {
    split(std::exchange(node.right, {}), name, node.right, above);
    below = std::move(tree);
  } else {
    split(std::exchange(node.left, {}), name, below, node.left);
    above = std::move(tree);
  }
}

BufferRegistry::NodeRef BufferRegistry::merge(NodeRef below, NodeRef above) {
  if (!below || !above) return below ? below : above;
  if (below->rank >= above->rank) {
    Node& node = own(below);
    node.right = merge(std::exchange(node.right, {}), std::move(above));
    return below;
  }
  Node& node = own(above);
  node.left = merge(std::move(below), std::exchange(node.left, {}));
  return above;
}

std::string normalize_buffer_name(std::string_view name) {
  std::string_view rest = trim(name);
  if (rest.starts_with('=')) rest.remove_prefix(1);
  return upper(trim(strip_optional_quotes(rest)));
}

} // namespace zan
