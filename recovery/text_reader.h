#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "recovery/entries.h"
#include "text/line_store.h"

namespace zan {

// Reads what TextRecorder has written. Whatever the entries say, it ends in a text or in a failure: numbers
// that lead nowhere, and texts of more than 256 TB, are failures.
class TextReader {
 public:
  struct Reference { // to a text: nothing, a stretch of a base, or a node
    enum class Kind { nothing, base, node } kind = Kind::nothing;
    std::uint64_t number = 0; // of the base or the node
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
  };

  // The rest of an entry whose tag ('b' or 'n') has been read; the bytes must live as long as this object.
  // False when they make no sense.
  bool read(char tag, EntryReader& entry);
  Reference read_reference(EntryReader& entry) const; // as TextRecorder::refer_to has written it here

 private:
  friend class TextBuilder;

  struct Run {
    std::uint64_t source; // 0: a block, else a base + 1
    std::uint64_t block;
    std::uint64_t offset;
    std::uint64_t length;
  };
  struct NodeEntry {
    Reference left;
    Reference right;
    bool literal;
    std::vector<Run> runs;
  };
  Reference read_reference_from(std::uint64_t number, EntryReader& entry) const;
  bool read_node(EntryReader& entry);

  std::uint64_t last_ = 0; // number of the last node read
  std::unordered_map<std::uint64_t, NodeEntry> nodes_;
  std::map<std::pair<std::uint64_t, std::uint64_t>, std::string_view> bytes_; // by block and start
};

// Makes texts of what a reader has read. Each node becomes a tree once, however many lead to it.
class TextBuilder {
 public:
  // `bases` by their indices; null: not there. Both arguments must live as long as this object.
  TextBuilder(const TextReader& reader, const std::vector<const LineStore*>& bases);

  // Nothing when the entries do not make a text. What stood in a base that is not there is left out.
  std::optional<LineStore> text_of(const TextReader::Reference& reference);
  const std::set<std::uint64_t>& missing_bases() const { return missing_; } // in the texts so far

 private:
  NodeRef tree_of(const TextReader::Reference& reference, int depth);
  NodeRef of_base(std::uint64_t base, std::uint64_t offset, std::uint64_t length);
  NodeRef of_block(const TextReader::Run& run, bool literal);
  NodeRef of_runs(const TextReader::NodeEntry& node);
  NodeRef joined(const NodeRef& left, const NodeRef& right);

  const TextReader& reader_;
  const std::vector<const LineStore*>& bases_;
  std::map<std::pair<std::uint64_t, std::uint64_t>, BlockRef> blocks_; // by number and start
  std::unordered_map<std::uint64_t, NodeRef> trees_;
  std::set<std::uint64_t> missing_;
  bool failed_ = false; // in the text at hand
};

} // namespace zan
