#include "search/store_scan.h"

#include <algorithm>
#include <vector>

namespace zan {

namespace {

constexpr std::size_t kLargeChunk = 4096;    // searched where it lies; smaller ones are copied together
constexpr std::size_t kSeamSize = 64 * 1024; // a seam of many small chunks ends about here

} // namespace

StoreScan::StoreScan(const LineStore& text, const Substring& needle, std::uint64_t begin, std::uint64_t end,
                     Way way)
    : needle_(needle), walker_(text, begin, end), forward_(way == Way::forward),
      overlap_(std::max<std::size_t>(needle.size(), 1) - 1),
      begin_(forward_ ? begin : std::min(end, text.byte_count())) {}

std::optional<std::uint64_t> StoreScan::next(std::uint64_t from) {
  do {
    const std::size_t at = needle_.find(window_, std::max(from, begin_) - begin_);
    if (at != Substring::npos) return begin_ + at;
  } while (advance());
  return std::nullopt;
}

std::optional<std::uint64_t> StoreScan::previous(std::uint64_t until) {
  do {
    const std::size_t at = until > begin_ ? needle_.find_last(window_, until - begin_) : Substring::npos;
    if (at != Substring::npos) return begin_ + at;
  } while (advance());
  return std::nullopt;
}

void StoreScan::reach(std::uint64_t offset) {
  while ((forward_ ? offset >= window_end() : offset <= begin_) && advance()) {}
}

bool StoreScan::fetch() {
  if (!chunk_waits_) chunk_waits_ = forward_ ? walker_.next(chunk_) : walker_.previous(chunk_);
  return chunk_waits_;
}

bool StoreScan::is_large() const { return chunk_.bytes.size() >= std::max(kLargeChunk, needle_.size()); }

// Goes on to the next window.
bool StoreScan::advance() {
  if (!fetch()) return false;
  if (is_large() && (chunk_sewn_ || overlap_ == 0 || window_.empty())) {
    window_ = chunk_.bytes;
    begin_ = chunk_.offset;
    literal_ = chunk_.literal;
    chunk_waits_ = chunk_sewn_ = false;
  } else {
    sew();
  }
  return true;
}

// Makes a window of the end of the last one, of small chunks, and of the beginning of a large one. (Backward,
// beginning and end change places.)
void StoreScan::sew() {
  const auto near = [&](std::string_view bytes, bool last) { // at most overlap_ bytes from one of its ends
    const std::size_t size = std::min(bytes.size(), overlap_);
    return last ? bytes.substr(bytes.size() - size) : bytes.substr(0, size);
  };
  std::vector<std::string_view> parts{near(window_, forward_)};
  const std::uint64_t kept = parts.front().size();
  const std::uint64_t joint = forward_ ? window_end() - kept : begin_ + kept;
  std::size_t size = kept;
  literal_ = literal_ && kept > 0;
  // The overlap counts for more than one seam's worth, or a long needle would be copied for every chunk.
  while (size < kSeamSize + 4 * overlap_ && fetch()) {
    chunk_sewn_ = is_large();
    parts.push_back(chunk_sewn_ ? near(chunk_.bytes, !forward_) : chunk_.bytes);
    size += parts.back().size();
    literal_ = literal_ || chunk_.literal;
    if (chunk_sewn_) break;
    chunk_waits_ = false;
  }
  if (!forward_) std::ranges::reverse(parts);
  std::string seam; // parts may lie in seam_
  seam.reserve(size);
  for (const std::string_view part : parts) seam += part;
  seam_ = std::move(seam);
  window_ = seam_;
  begin_ = forward_ ? joint : joint - size;
}

} // namespace zan
