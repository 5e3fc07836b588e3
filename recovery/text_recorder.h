#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include "recovery/entries.h"
#include "text/line_store.h"

namespace zan {

// Writes texts as entries, each node of their trees and each byte once: of a text that shares all but a few
// nodes with one that has been recorded, only these are written. Nodes and blocks are marked with numbers for
// that, which nobody but one recorder at a time may use.
// docs/recovery.md describes the entries.
class TextRecorder {
 public:
  // The marks that are given next. They grow from recorder to recorder, so that a mark tells who gave it.
  struct Numbers {
    std::uint32_t node = 1;
    std::uint32_t block = 1;
  };

  explicit TextRecorder(Numbers first) : first_(first), next_(first) {}
  Numbers next() const { return next_; }
  bool has_numbers_left() const { return next_.node < kLastNumber; }

  // From now on what `text` shares with another text is a stretch of the base with that index: of a text that
  // whoever restores will have. Linear in the pieces.
  void add_base(std::uint32_t base, const LineStore& text);

  // Adds what of `text` is not recorded yet, and stops soon after `most` bytes. True when nothing is missing
  // any more; else it is to be called again with the same text.
  bool record(const LineStore& text, std::size_t most, EntryWriter& entries);
  void refer_to(const LineStore& text, EntryWriter& entries) const; // which has been recorded

 private:
  static constexpr std::uint32_t kLastNumber = 0xF0000000;
  static constexpr std::uint32_t kBlock = 0xFFFFFFFF; // the source of bytes that are written themselves

  // Where the bytes of a block from a place on can be had.
  struct Extent {
    std::size_t end;
    std::uint32_t source; // kBlock, or a base
    std::uint64_t offset; // in that
  };
  using Extents = std::map<std::size_t, Extent>; // by their beginnings; none overlaps another
  struct Gap {
    std::size_t begin;
    std::size_t end;
    bool empty() const { return begin == end; }
  };

  // The nodes of a base have numbers of their own, and are never written.
  struct BaseNodes {
    std::uint32_t base;
    std::uint32_t first;
    std::vector<std::uint64_t> offsets; // of each node's subtree in the base, from number `first` on
  };

  bool is_known(const Node& node) const { return node.number >= first_.node && node.number < next_.node; }
  void add_base_nodes(const NodeRef& tree, std::uint64_t offset, BaseNodes& nodes);
  // The first stretch of [begin, end) that no extent covers; empty when there is none.
  static Gap first_gap(const Extents& extents, std::size_t begin, std::size_t end);
  const BaseNodes* base_of(std::uint32_t number) const;
  Extents& extents_of(const Block& block);
  bool record_bytes(const Piece& piece, std::size_t most, EntryWriter& entries);
  static void add_written(Gap written, Extents& extents);
  void record_node(const Node& node, EntryWriter& entries);
  void put_runs(const Piece& piece, EntryWriter& entries);
  void put_reference(const Node* node, std::uint32_t from, EntryWriter& entries) const;

  Numbers first_;
  Numbers next_;
  std::uint32_t last_written_ = 0;                    // node, counted from the first
  std::vector<BaseNodes> bases_;                      // in the order of their numbers
  std::unordered_map<std::uint32_t, Extents> blocks_; // by their numbers
};

} // namespace zan
