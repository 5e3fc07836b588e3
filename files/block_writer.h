#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "host/abort.h"

namespace zan {

// Writes a stream of pieces to a descriptor in large blocks: small pieces are gathered, large ones are
// written from where they lie, so that saving a big text copies next to nothing. Does not own the descriptor.
class BlockWriter {
 public:
  explicit BlockWriter(int descriptor, Abort& abort = kNeverAborted);
  // False after an error: no later piece is written.
  bool put(std::string_view bytes) {
    if (bytes.size() > block_.size() - used_) return put_across(bytes);
    std::copy(bytes.begin(), bytes.end(), block_.begin() + static_cast<std::ptrdiff_t>(used_));
    used_ += bytes.size();
    return !failed_;
  }
  bool flush(); // writes what is gathered; false when any write has failed
  std::uint64_t written() const { return written_; } // bytes that the system has taken

 private:
  bool put_across(std::string_view bytes); // more than the block has room for
  bool write_out(std::string_view bytes);

  int descriptor_;
  Abort& abort_;
  bool failed_ = false;
  std::uint64_t written_ = 0;
  std::string block_; // its size never changes
  std::size_t used_ = 0;
};

// Puts all bytes of a file into the writer; false when the writer failed. Each call puts the same bytes.
using ByteSource = std::function<bool(BlockWriter& out)>;

// Flushes a descriptor's data to the disk. True also for things that cannot be synced, such as pipes.
bool sync_fully(int descriptor);

} // namespace zan
