#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/text/store_play.h"

namespace zan::test {

// A TextBuffer as it is explained to users: lines in a list, the mark moved by one plain rule for each kind
// of edit. The functions are named and called like TextBuffer's; text is handed out as bytes.
struct BufferModel {
  std::vector<std::string> lines{""};
  bool modified = false;
  bool final_newline = true;
  bool has_mark = false;
  Position mark{};

  std::uint64_t count() const { return lines.size(); }
  std::uint64_t length(std::uint64_t row) const { return row < count() ? lines[row].size() : 0; }
  auto place(std::uint64_t row) { return lines.begin() + static_cast<std::ptrdiff_t>(row); }

  // ---- whole text
  std::string text() const {
    std::string bytes = join(0, count() - 1);
    if (final_newline && lines != std::vector<std::string>{""}) bytes += '\n';
    return bytes;
  }
  void set_text(const LineStore& text) {
    const std::string bytes = text.to_string();
    final_newline = bytes.ends_with('\n');
    lines = lines_of(model_of(bytes, true));
    if (final_newline) lines.pop_back();
    for (std::string& line : lines)
      if (line.ends_with('\r')) line.pop_back();
    clear_mark();
    modified = true;
  }
  void clear() {
    lines = {""};
    clear_mark();
    final_newline = modified = true;
  }
  void ensure_row(std::uint64_t row) {
    while (row >= count()) lines.emplace_back();
  }
  void replace_lines(const LineStore& text) {
    lines = walked_lines(text);
    modified = true;
  }
  void clear_modified() { modified = false; }

  // ---- character edits
  void insert_char(std::uint64_t row, std::uint64_t col, char c) {
    ensure_row(row);
    col = std::min(col, length(row));
    lines[row].insert(col, 1, c);
    if (has_mark && mark.row == row && mark.col >= col) ++mark.col;
    modified = true;
  }
  void split_line(std::uint64_t row, std::uint64_t col) {
    ensure_row(row);
    col = std::min(col, length(row));
    lines.insert(place(row + 1), lines[row].substr(col));
    lines[row].resize(col);
    modified = true;
    if (!has_mark || mark.row < row || (mark.row == row && mark.col < col)) return;
    if (mark.row == row) mark.col -= col;
    ++mark.row;
  }
  void split_line_at(std::uint64_t row, std::span<const std::uint64_t> columns) {
    for (std::size_t i = 0; i < columns.size(); ++i)
      split_line(row + i, columns[i] - (i == 0 ? 0 : columns[i - 1]));
  }
  char backspace(std::uint64_t& row, std::uint64_t& col) {
    if (row >= count() || (row == 0 && col == 0) || col > length(row)) return 0;
    if (col > 0) return take(row, --col, 1)[0];
    col = length(--row);
    join_next(row);
    return '\n';
  }
  char delete_at(std::uint64_t row, std::uint64_t col) {
    if (row >= count()) return 0;
    if (col < length(row)) return take(row, col, 1)[0];
    if (row + 1 == count()) return 0;
    join_next(row);
    return '\n';
  }
  std::string delete_to_eol(std::uint64_t row, std::uint64_t col) {
    if (row >= count()) return "";
    col = std::min(col, length(row));
    if (has_mark && mark.row == row) mark.col = std::min(mark.col, col);
    return take(row, col, length(row) - col);
  }
  std::string delete_to_bol(std::uint64_t row, std::uint64_t& col) {
    if (row >= count()) return "";
    return take(row, 0, std::min(std::exchange(col, 0), length(row)));
  }
  std::string delete_word_forward(std::uint64_t row, std::uint64_t& col, std::string_view delimiters) {
    if (col >= length(row)) return "";
    const auto delimits = [&](std::uint64_t at) {
      return delimiters.find(lines[row][at]) < delimiters.size();
    };
    std::uint64_t end = col;
    while (end < length(row) && delimits(end)) ++end;
    while (end < length(row) && !delimits(end)) ++end;
    return take(row, col, end - col);
  }
  std::string delete_word_backward(std::uint64_t& row, std::uint64_t& col, std::string_view delimiters) {
    if (row >= count()) return "";
    if (col == 0 && backspace(row, col) == 0) return "";
    const auto delimits = [&](std::uint64_t at) {
      return delimiters.find(lines[row][at]) < delimiters.size();
    };
    const std::uint64_t end = col = std::min(col, length(row));
    while (col > 0 && delimits(col - 1)) --col;
    while (col > 0 && !delimits(col - 1)) --col;
    return end == 0 ? "" : take(row, col, end - col);
  }
  void insert_text(std::uint64_t& row, std::uint64_t& col, const LineStore& text) {
    for (const char c : text.to_string()) {
      if (c == '\n') split_line(row, col);
      else insert_char(row, col, c);
      row += c == '\n' ? 1 : 0;
      col = c == '\n' ? 0 : col + 1;
    }
  }
  void replace_in_line(std::uint64_t row, std::uint64_t col, std::uint64_t size, std::string_view bytes) {
    std::string& line = lines[row];
    const std::string before = line;
    line.replace(std::min(col, length(row)), size, bytes);
    modified = modified || line != before;
  }
  void transform_span(Position start, Position end, char (*change)(char)) {
    for (std::uint64_t row = start.row; row <= end.row && row < count(); ++row)
      for (std::uint64_t col = row == start.row ? start.col : 0;
           col < (row == end.row ? std::min(end.col, length(row)) : length(row)); ++col) {
        const char before = std::exchange(lines[row][col], change(lines[row][col]));
        modified = modified || lines[row][col] != before;
      }
  }

  // ---- spans and lines
  std::string text_in_span(std::uint64_t r1, std::uint64_t c1, std::uint64_t r2, std::uint64_t c2) const {
    if (r1 >= count() || r2 < r1) return "";
    r2 = std::min(r2, count() - 1);
    c1 = std::min(c1, length(r1));
    c2 = std::min(c2, length(r2));
    if (r1 == r2) return c1 < c2 ? lines[r1].substr(c1, c2 - c1) : "";
    std::string bytes = lines[r1].substr(c1) + "\n";
    for (std::uint64_t row = r1 + 1; row < r2; ++row) bytes += lines[row] + "\n";
    return bytes + lines[r2].substr(0, c2);
  }
  std::string delete_span(std::uint64_t r1, std::uint64_t c1, std::uint64_t r2, std::uint64_t c2) {
    const std::string removed = text_in_span(r1, c1, r2, c2);
    if (removed.empty()) return "";
    r2 = std::min(r2, count() - 1);
    const Position start{r1, std::min(c1, length(r1))}, end{r2, std::min(c2, length(r2))};
    if (has_mark && start <= mark) {
      if (mark < end) mark = start;
      else if (mark.row == r2) mark = {r1, start.col + (mark.col - end.col)};
      else mark.row -= r2 - r1;
    }
    lines[r1] = lines[r1].substr(0, start.col) + lines[r2].substr(end.col);
    lines.erase(place(r1 + 1), place(r2 + 1));
    clamp_mark();
    modified = true;
    return removed;
  }
  std::string delete_range(std::uint64_t first, std::uint64_t last) {
    if (first >= count() || last < first) return "";
    last = std::min(last, count() - 1);
    const std::string removed = join(first, last) + "\n";
    lines.erase(place(first), place(last + 1));
    if (lines.empty()) lines = {""};
    if (has_mark && mark.row > last) mark.row -= last - first + 1;
    else if (has_mark && mark.row >= first) mark = {first, 0};
    clamp_mark();
    modified = true;
    return removed;
  }
  std::string delete_line(std::uint64_t row) { return delete_range(row, row); }
  void append_lines(const LineStore& added) {
    const Position before = mark;
    insert_lines(count(), added);
    mark = before;
    final_newline = true;
  }
  void insert_lines(std::uint64_t at, const LineStore& added) {
    const std::vector<std::string> more = walked_lines(added);
    at = std::min(at, count());
    modified = true;
    if (lines == std::vector<std::string>{""}) {
      lines = more;
      return;
    }
    lines.insert(place(at), more.begin(), more.end());
    if (has_mark && mark.row >= at) mark.row += more.size();
  }

  // ---- the mark
  void set_mark(std::uint64_t row, std::uint64_t col) {
    has_mark = true;
    mark = {row, col};
    clamp_mark();
  }
  void clear_mark() {
    has_mark = false;
    mark = {};
  }
  void clamp_mark() {
    if (!has_mark) return;
    if (mark.row >= count()) mark = {count() - 1, length(count() - 1)};
    mark.col = std::min(mark.col, length(mark.row));
  }

 private:
  std::string join(std::uint64_t first, std::uint64_t last) const {
    std::string bytes;
    for (std::uint64_t row = first; row <= last; ++row) bytes += (row == first ? "" : "\n") + lines[row];
    return bytes;
  }
  // Removes bytes of one line.
  std::string take(std::uint64_t row, std::uint64_t col, std::uint64_t size) {
    const std::string removed = lines[row].substr(col, size);
    lines[row].erase(col, size);
    if (has_mark && mark.row == row && mark.col > col)
      mark.col = mark.col >= col + size ? mark.col - size : col;
    modified = true;
    return removed;
  }
  void join_next(std::uint64_t row) {
    if (has_mark && mark.row == row + 1) mark.col += length(row);
    if (has_mark && mark.row > row) --mark.row;
    lines[row] += lines[row + 1];
    lines.erase(place(row + 1));
    modified = true;
  }
};

} // namespace zan::test
