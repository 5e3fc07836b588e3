#include "app/editor.h"

#include "text/bytes.h"

namespace {

constexpr std::sig_atomic_t kNeverAborted = 0;

} // namespace

// ---- TextBuffer

bool TextBuffer::has_wildcards(const std::string& pattern) { return zan::has_wildcards(pattern); }

std::string TextBuffer::to_lower(std::string text) { return zan::lower(text); }

std::int64_t TextBuffer::wmatch(const char* pattern, const char* text, std::size_t length) {
  const auto matched =
      zan::Pattern(pattern, true, zan::Pattern::Reading::elements).match_at({text, length}, 0);
  return matched ? static_cast<std::int64_t>(*matched) : -1;
}

std::optional<zan::Position> TextBuffer::find_forward(const std::string& pattern, std::uint64_t row,
                                                      std::uint64_t col, bool exact) const {
  return zan::search_forward(lines_, zan::Pattern(pattern, exact), {row, col}, {}, kNeverAborted);
}

std::optional<zan::Position> TextBuffer::find_backward(const std::string& pattern, std::uint64_t row,
                                                       std::uint64_t col, bool exact) const {
  return zan::search_backward(lines_, zan::Pattern(pattern, exact), {row, col}, {}, kNeverAborted);
}

std::uint64_t TextBuffer::match_len_at(const std::string& pattern, std::uint64_t row, std::uint64_t col,
                                       bool exact) const {
  // A plain one needs no line, which may be long.
  if (row >= line_count() || !zan::has_wildcards(pattern)) return pattern.size();
  const zan::TextView text = line(row);
  return zan::Pattern(pattern, exact).match_length(text, static_cast<std::size_t>(col));
}

// ---- Editor

zan::SearchConstraints Editor::search_constraints() const {
  zan::SearchConstraints wanted{search_begin, search_end, search_word, {}};
  if (wanted.word) wanted.delimiters = delimiter_set();
  return wanted;
}

bool Editor::match_constraints_ok(std::uint64_t row, std::uint64_t col, std::uint64_t length) const {
  if (row >= current.line_count()) return false;
  return zan::constraints_ok(current.line(row), static_cast<std::size_t>(col),
                             static_cast<std::size_t>(length), search_constraints());
}

std::optional<zan::Position> Editor::search_forward(std::uint64_t row, std::uint64_t col) const {
  if (g_zan_abort_requested != 0) return std::nullopt;
  return zan::search_forward(current.lines(), zan::Pattern(search_string, search_exact), {row, col},
                             search_constraints(), g_zan_abort_requested);
}

std::optional<zan::Position> Editor::search_backward(std::uint64_t row, std::uint64_t col) const {
  if (g_zan_abort_requested != 0) return std::nullopt;
  return zan::search_backward(current.lines(), zan::Pattern(search_string, search_exact), {row, col},
                              search_constraints(), g_zan_abort_requested);
}
