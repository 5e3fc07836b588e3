#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "search/substring.h"
#include "text/line_store.h"

namespace zan {

// Searches a text for one byte string, forward or backward, in the pieces as they lie in memory. Line breaks
// are read as line feeds. Searches that each continue where the last one ended cost one pass together.
//
// It sees the text through windows that overlap by the needle's length less one, so that none cuts an
// occurrence. A large piece is a window by itself. Small pieces, and the joints between large ones, are
// copied into seams.
class StoreScan {
 public:
  enum class Way { forward, backward };
  // Searches [begin, end). With an empty needle it only moves the window.
  StoreScan(const LineStore& text, const Substring& needle, std::uint64_t begin, std::uint64_t end, Way way);
  StoreScan(const StoreScan&) = delete;
  StoreScan& operator=(const StoreScan&) = delete;

  // Forward only: offset of the first occurrence that starts at or after `from`, which never decreases.
  std::optional<std::uint64_t> next(std::uint64_t from);
  // Backward only: offset of the last occurrence that ends at or before `until`, which never increases.
  std::optional<std::uint64_t> previous(std::uint64_t until);
  // Moves on to the window that contains the byte at `offset` (backward: the byte before it), if there is
  // one.
  void reach(std::uint64_t offset);

  // The current window, valid until the next search. It contains the occurrence found last.
  std::string_view window() const { return window_; }
  std::uint64_t window_begin() const { return begin_; }
  std::uint64_t window_end() const { return begin_ + window_.size(); }
  // Some line feed in the window may be a byte of a line instead of a break.
  bool window_is_literal() const { return literal_; }

 private:
  bool fetch_chunk();
  bool is_large() const;
  bool advance();
  void make_seam();
  std::vector<std::string_view> seam_parts(std::string_view overlap);

  const Substring& needle_;
  PieceWalker walker_;
  bool forward_;
  std::size_t overlap_;
  std::string_view window_;
  std::uint64_t begin_; // of the window
  bool literal_ = false;
  std::string seam_;
  Chunk chunk_;
  bool chunk_waits_ = false;        // chunk_ has not been in a window yet
  bool seam_reaches_chunk_ = false; // the last window overlaps chunk_, which may be a window by itself
};

} // namespace zan
