#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/block.h"
#include "text/text_buffer.h"

namespace zan {

// The named buffers in name order. Copies share what neither has changed, so an undo snapshot costs one
// pointer, and a change after it O(log buffers).
class BufferRegistry {
 public:
  const TextBuffer* find(std::string_view name) const; // null when there is none
  TextBuffer& entry(std::string_view name); // created empty when there is none; valid until the next change
  void erase(std::string_view name);

  struct Entry {
    std::string_view name;
    const TextBuffer& buffer;
  };
  std::vector<Entry> entries() const; // valid until the next change

 private:
  // A treap: a search tree by name that is a heap by rank, which a hash of the name gives. So its shape
  // depends on the names alone, and is balanced but for names chosen to make it not so.
  struct Node;
  using NodeRef = Ref<Node>;
  struct Node {
    std::string name;
    std::uint64_t rank = 0;
    TextBuffer buffer;
    NodeRef left;
    NodeRef right;
    std::uint32_t refs = 0;
  };

  static Node& own(NodeRef& tree); // the node, copied first when it is shared
  static TextBuffer& entry_in(NodeRef& tree, std::string_view name, std::uint64_t rank);
  static void split(NodeRef tree, std::string_view name, NodeRef& below, NodeRef& above);
  static NodeRef merge(NodeRef below, NodeRef above);

  NodeRef root_;
};

// The normal form of a buffer name: trimmed, without one leading "=" and one pair of quotes, trimmed, upper
// case.
std::string normalize_buffer_name(std::string_view name);

} // namespace zan
