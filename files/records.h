#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "files/block_writer.h"
#include "text/line_store.h"

// How lines become the bytes of a file. Sinks take a string_view and return false to stop; so do the
// functions that feed them.
namespace zan {

// Cuts lines, which may come in parts, into records of exactly `length` bytes (at least 1), each followed by
// a line feed. The last record of a line is padded with spaces. An empty line still makes one record, of
// spaces: no line vanishes from the file. Nothing is gathered, whatever the length.
class FixedRecords {
 public:
  explicit FixedRecords(std::size_t length) : length_(length) {}

  template <typename Sink> bool add(std::string_view part, Sink&& sink) { // more bytes of the line
    while (!part.empty()) {
      // Only here is it certain that a full record is not the line's last one.
      if (filled_ == length_ && !end_record(sink)) return false;
      const std::string_view piece = part.substr(0, length_ - filled_);
      if (!sink(piece)) return false;
      filled_ += piece.size();
      part.remove_prefix(piece.size());
    }
    return true;
  }

  template <typename Sink> bool end_line(Sink&& sink) {
    std::size_t missing = length_ - filled_;
    for (; missing >= kPadding.size(); missing -= kPadding.size() - 1) {
      if (!sink(kPadding.substr(0, kPadding.size() - 1))) return false;
    }
    filled_ = 0;
    return sink(kPadding.substr(kPadding.size() - 1 - missing));
  }

 private:
  // Spaces and the line feed that ends the record.
  static constexpr std::string_view kPadding =
      "                                                                \n";

  template <typename Sink> bool end_record(Sink&& sink) {
    filled_ = 0;
    return sink(std::string_view("\n"));
  }

  std::size_t length_;
  std::size_t filled_ = 0; // bytes of the record begun
};

// Lines of a text. A stretch that reaches beyond the last line is cut off there.
struct RowStretch {
  std::uint64_t first = 0;
  std::uint64_t count = 0;
};

// The bytes of one chunk as records. A line feed that stands inside a line is one of its bytes.
template <typename Sink> bool cut_chunk(const Chunk& chunk, FixedRecords& records, Sink&& sink) {
  std::string_view rest = chunk.bytes;
  if (chunk.literal) return records.add(rest, sink);
  for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
    if (!records.add(rest.substr(0, end), sink) || !records.end_line(sink)) return false;
    rest.remove_prefix(end + 1);
  }
  return records.add(rest, sink);
}

// Hands the bytes of the file that holds `rows` of `text` to `sink`: records of `record_length` bytes, or the
// lines as they are when that is 0. Each record or line ends in a line feed. But a single empty line makes an
// empty file when there are no records, and no rows at all make a file of one line feed.
template <typename Sink>
bool each_file_piece(const LineStore& text, RowStretch rows, std::size_t record_length, Sink&& sink) {
  const std::uint64_t total = text.line_count();
  const std::uint64_t count = rows.first < total ? std::min(rows.count, total - rows.first) : 0;
  if (count == 0) return sink(std::string_view("\n"));
  const std::uint64_t begin = text.line_start(rows.first);
  const std::uint64_t end = text.line_end(rows.first + count - 1);
  if (record_length == 0 && count == 1 && begin == end) return true;
  FixedRecords records(record_length);
  PieceWalker walker(text, begin, end);
  for (Chunk chunk; walker.next(chunk);) {
    if (!(record_length == 0 ? sink(chunk.bytes) : cut_chunk(chunk, records, sink))) return false;
  }
  return record_length == 0 ? sink(std::string_view("\n")) : records.end_line(sink);
}

// The record length for each_file_piece, from the settings. A fixed length below 1 means no records.
inline std::size_t effective_record_length(bool fixed, int length) {
  return fixed && length >= 1 ? static_cast<std::size_t>(length) : 0;
}

// The same bytes as a source. It holds a copy of the text, which shares everything.
ByteSource record_source(const LineStore& text, RowStretch rows, std::size_t record_length);

} // namespace zan
