#include "text/byte_scan.h"

#include <algorithm>

#include "text/bytes.h"

namespace zan {

ByteSet byte_set(std::string_view bytes) {
  ByteSet set{};
  for (const char c : bytes) set[to_byte(c)] = true;
  return set;
}

std::uint64_t scan_forward(const LineStore& text, std::uint64_t begin, std::uint64_t end, const ByteSet& set,
                           bool member) {
  PieceWalker walker(text, begin, end);
  for (Chunk chunk; walker.next(chunk);) {
    const auto found = std::ranges::find_if(chunk.bytes, [&](char c) { return set[to_byte(c)] == member; });
    if (found != chunk.bytes.end())
      return chunk.offset + static_cast<std::uint64_t>(found - chunk.bytes.begin());
  }
  return end;
}

std::uint64_t scan_backward(const LineStore& text, std::uint64_t begin, std::uint64_t end, const ByteSet& set,
                            bool member) {
  PieceWalker walker(text, begin, end);
  for (Chunk chunk; walker.previous(chunk);) {
    for (std::size_t i = chunk.bytes.size(); i > 0; --i)
      if (set[to_byte(chunk.bytes[i - 1])] == member) return chunk.offset + i;
  }
  return begin;
}

} // namespace zan
