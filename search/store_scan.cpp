#include "search/store_scan.h"

#include <algorithm>

namespace zan {

namespace {

constexpr std::size_t kLargeChunk = 4096;    // searched where it lies; smaller ones are copied together
constexpr std::size_t kSeamSize = 64 * 1024; // a seam of many small chunks ends about here

std::string_view first_bytes(std::string_view bytes, std::size_t count) { return bytes.substr(0, count); }
std::string_view last_bytes(std::string_view bytes, std::size_t count) {
  return bytes.substr(bytes.size() - std::min(bytes.size(), count));
}

} // namespace

StoreScan::StoreScan(const LineStore& text, const Substring& needle, std::uint64_t begin, std::uint64_t end,
                     Way way)
    : needle_(needle), walker_(text, begin, end), forward_(way == Way::forward),
      overlap_(std::max<std::size_t>(needle.size(), 1) - 1),
      begin_(forward_ ? begin : std::min(end, text.byte_count())) {}

std::optional<std::uint64_t> StoreScan::next(std::uint64_t from) {
  do {
    const std::uint64_t start = std::max(from, begin_);
    const std::size_t at =
        start <= window_end() ? needle_.find(window_, in_memory(start - begin_)) : Substring::npos;
    if (at != Substring::npos) return begin_ + at;
  } while (advance());
  return std::nullopt;
}

std::optional<std::uint64_t> StoreScan::previous(std::uint64_t until) {
  do {
    const std::uint64_t stop = std::min(until, window_end());
    const std::size_t at =
        stop > begin_ ? needle_.find_last(window_, in_memory(stop - begin_)) : Substring::npos;
    if (at != Substring::npos) return begin_ + at;
  } while (advance());
  return std::nullopt;
}

void StoreScan::reach(std::uint64_t offset) {
  while ((forward_ ? offset >= window_end() : offset <= begin_) && advance()) {}
}

// Makes chunk_ the next one that was in no window yet. False at the end.
bool StoreScan::fetch_chunk() {
  if (!chunk_waits_) chunk_waits_ = forward_ ? walker_.next(chunk_) : walker_.previous(chunk_);
  return chunk_waits_;
}

bool StoreScan::is_large() const { return chunk_.bytes.size() >= std::max(kLargeChunk, needle_.size()); }

// Goes on to the next window.
bool StoreScan::advance() {
  if (!fetch_chunk()) return false;
  if (is_large() && (seam_reaches_chunk_ || overlap_ == 0 || window_.empty())) {
    window_ = chunk_.bytes;
    begin_ = chunk_.offset;
    literal_ = chunk_.literal;
    chunk_waits_ = seam_reaches_chunk_ = false;
  } else {
    make_seam();
  }
  return true;
}

void StoreScan::make_seam() {
  const std::string_view overlap = forward_ ? last_bytes(window_, overlap_) : first_bytes(window_, overlap_);
  const std::uint64_t entry = forward_ ? window_end() - overlap.size() : begin_ + overlap.size();
  literal_ = literal_ && !overlap.empty();
  std::vector<std::string_view> parts = seam_parts(overlap);
  if (!forward_) std::ranges::reverse(parts);
  std::size_t size = 0;
  for (const std::string_view part : parts) size += part.size();
  std::string seam; // not seam_ itself: the overlap may lie in it
  seam.reserve(size);
  for (const std::string_view part : parts) seam += part;
  seam_ = std::move(seam);
  window_ = seam_;
  begin_ = forward_ ? entry : entry - size;
}

// What a seam consists of, in the order of the search: the overlap with the last window, small chunks, and
// the overlap with the window of a large chunk that ends it.
std::vector<std::string_view> StoreScan::seam_parts(std::string_view overlap) {
  std::vector<std::string_view> parts{overlap};
  std::size_t size = overlap.size();
  // The overlap must be a small part of a seam, or a long needle would be copied for every chunk.
  while (!seam_reaches_chunk_ && size < kSeamSize + 4 * overlap_ && fetch_chunk()) {
    std::string_view part = chunk_.bytes;
    seam_reaches_chunk_ = is_large();
    if (seam_reaches_chunk_) part = forward_ ? first_bytes(part, overlap_) : last_bytes(part, overlap_);
    parts.push_back(part);
    size += part.size();
    literal_ = literal_ || chunk_.literal;
    chunk_waits_ = seam_reaches_chunk_;
  }
  return parts;
}

} // namespace zan
