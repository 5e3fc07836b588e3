#include "app/editor.h"

zan::SearchConstraints Editor::search_constraints() const {
  zan::SearchConstraints wanted{search_begin, search_end, search_word, {}};
  if (wanted.word) wanted.delimiters = delimiter_set();
  return wanted;
}

bool Editor::match_constraints_ok(std::uint64_t row, std::uint64_t col, std::uint64_t length) const {
  if (row >= current.line_count()) return false;
  const zan::TextView line = current.line(row);
  return zan::constraints_ok(line, zan::in_memory(col), zan::in_memory(length), search_constraints());
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
