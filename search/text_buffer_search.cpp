#include "search/text_search.h"
#include "text/bytes.h"
#include "text/text_buffer.h"

// The members of TextBuffer that search.

bool TextBuffer::has_wildcards(const std::string& pattern) { return zan::has_wildcards(pattern); }

std::string TextBuffer::to_lower(std::string_view text) { return zan::lower(text); }

std::int64_t TextBuffer::wmatch(const char* pattern, const char* text, std::size_t length) {
  const auto matched =
      zan::Pattern(pattern, true, zan::Pattern::Reading::elements).match_at({text, length}, 0);
  return matched ? static_cast<std::int64_t>(*matched) : -1;
}

std::optional<zan::Position> TextBuffer::find_forward(const std::string& pattern, std::uint64_t row,
                                                      std::uint64_t col, bool exact) const {
  return zan::search_forward(lines_, zan::Pattern(pattern, exact), {row, col}, {}, zan::kNeverAborted);
}

std::optional<zan::Position> TextBuffer::find_backward(const std::string& pattern, std::uint64_t row,
                                                       std::uint64_t col, bool exact) const {
  return zan::search_backward(lines_, zan::Pattern(pattern, exact), {row, col}, {}, zan::kNeverAborted);
}

std::uint64_t TextBuffer::match_len_at(const std::string& pattern, std::uint64_t row, std::uint64_t col,
                                       bool exact) const {
  // A plain pattern needs no line: to fetch a long one takes time.
  if (row >= line_count() || !zan::has_wildcards(pattern)) return pattern.size();
  const zan::TextView text = line(row);
  return zan::Pattern(pattern, exact).match_length(text, zan::in_memory(col));
}
