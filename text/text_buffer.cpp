#include "text/text_buffer.h"

#include <algorithm>
#include <array>

#include "text/byte_scan.h"
#include "text/bytes.h"

using zan::LineStore;
using zan::LineStoreBuilder;
using zan::LineWalker;
using zan::Position;

namespace {

constexpr std::size_t kCacheful = 64 * 1024; // bytes that stay in the cache while they are read several times
constexpr std::uint64_t kAnyColumn = UINT64_MAX; // beyond every column

// The lines of `text` without one carriage return at each line's end.
LineStore without_returns(const LineStore& text) {
  if (!text.may_hold_returns()) return text;
  LineStoreBuilder builder;
  LineWalker walker(text, 0);
  std::string_view line;
  for (bool first = true; walker.next(line); first = false) {
    if (!first) builder.append_break();
    if (line.ends_with('\r')) line.remove_suffix(1);
    builder.append_bytes(line);
  }
  return builder.finish();
}

} // namespace

// ---- reading

LineStore TextBuffer::text() const {
  LineStore result = lines_;
  if (final_newline_ && !lines_.empty()) result.insert_text(result.byte_count(), "\n");
  return result;
}

LineStore TextBuffer::text_in_span(std::uint64_t r1, std::uint64_t c1, std::uint64_t r2,
                                   std::uint64_t c2) const {
  if (r1 >= line_count() || r2 < r1) return {};
  const std::uint64_t begin = lines_.offset_of({r1, c1});
  const std::uint64_t last = std::min(r2, line_count() - 1);
  const std::uint64_t end = lines_.offset_of({last, c2});
  return begin < end ? lines_.substore(begin, end) : LineStore();
}

std::optional<LineStore> TextBuffer::lines_in_range(std::uint64_t first, std::uint64_t last) const {
  if (first >= line_count() || last < first) return std::nullopt;
  return lines_.substore(lines_.line_start(first), lines_.line_end(std::min(last, line_count() - 1)));
}

// ---- whole text

bool TextBuffer::load(const std::string& path, zan::Abort& abort) {
  filename_ = path;
  clear_mark();
  zan::FileState found;
  auto loaded = zan::load_file(path, &found, abort);
  origin_ = std::make_shared<const zan::FileOrigin>(zan::FileOrigin{path, found});
  lines_ = loaded ? std::move(loaded->lines) : LineStore();
  final_newline_ = loaded ? loaded->final_newline : true;
  modified_ = false;
  return loaded.has_value();
}

void TextBuffer::set_text(const LineStore& text) {
  LineStore lines = text.with_literals_as_breaks();
  final_newline_ = lines.ends_with_break();
  if (final_newline_) lines.erase(lines.byte_count() - 1, lines.byte_count());
  lines_ = without_returns(lines);
  clear_mark();
  modified_ = true;
}

void TextBuffer::clear() {
  lines_ = LineStore();
  clear_mark();
  final_newline_ = true;
  modified_ = true;
}

void TextBuffer::ensure_row(std::uint64_t row) {
  if (row < line_count()) return;
  lines_.insert_text(lines_.byte_count(), std::string(zan::in_memory(row - line_count() + 1), '\n'));
}

void TextBuffer::replace_lines(LineStore lines) {
  lines_ = std::move(lines);
  modified_ = true;
}

// ---- character edits

void TextBuffer::insert_char(std::uint64_t row, std::uint64_t col, char c) {
  ensure_row(row);
  const std::uint64_t begin = lines_.line_start(row);
  col = std::min(col, lines_.line_end(row) - begin);
  lines_.insert_bytes(begin + col, std::string_view(&c, 1));
  after_edit({.begin = {row, col}, .end = {row, col}, .end_now = {row, col + 1}});
}

void TextBuffer::split_line(std::uint64_t row, std::uint64_t col) {
  insert_text(row, col, LineStore::from_text("\n"));
}

void TextBuffer::split_line_at(std::uint64_t row, std::span<const std::uint64_t> columns) {
  if (columns.empty()) return;
  const std::uint64_t line_start = lines_.line_start(row);
  LineStoreBuilder builder;
  std::uint64_t copied = 0;
  for (const std::uint64_t column : columns) {
    builder.append(lines_, copied, line_start + column);
    builder.append_break();
    copied = line_start + column;
  }
  builder.append(lines_, copied, lines_.byte_count());
  lines_ = builder.finish();
  // From the right, so that the splits still to come keep their columns.
  for (std::size_t i = columns.size(); i-- > 0;)
    after_edit({.begin = {row, columns[i]}, .end = {row, columns[i]}, .end_now = {row + 1, 0}});
}

char TextBuffer::backspace(std::uint64_t& row, std::uint64_t& col) {
  if (row >= line_count()) return 0;
  if (col == 0) {
    if (row == 0) return 0;
    col = line_length(--row);
    join_with_next(row);
    return '\n';
  }
  const std::uint64_t begin = lines_.line_start(row);
  if (col > lines_.line_end(row) - begin) return 0;
  --col;
  const char removed = lines_.byte_at(begin + col);
  lines_.erase(begin + col, begin + col + 1);
  after_erase({row, col}, {row, col + 1});
  return removed;
}

char TextBuffer::delete_at(std::uint64_t row, std::uint64_t col) {
  if (row >= line_count()) return 0;
  const std::uint64_t begin = lines_.line_start(row);
  if (col < lines_.line_end(row) - begin) {
    const char removed = lines_.byte_at(begin + col);
    lines_.erase(begin + col, begin + col + 1);
    after_erase({row, col}, {row, col + 1});
    return removed;
  }
  if (row + 1 >= line_count()) return 0;
  join_with_next(row);
  return '\n';
}

LineStore TextBuffer::delete_to_eol(std::uint64_t row, std::uint64_t col) {
  if (row >= line_count()) return {};
  const std::uint64_t begin = lines_.offset_of({row, col});
  const std::uint64_t end = lines_.line_end(row);
  LineStore removed = lines_.substore(begin, end);
  lines_.erase(begin, end);
  after_erase({row, line_length(row)}, {row, kAnyColumn});
  return removed;
}

LineStore TextBuffer::delete_to_bol(std::uint64_t row, std::uint64_t& col) {
  if (row >= line_count()) return {};
  const std::uint64_t begin = lines_.line_start(row);
  const std::uint64_t end = lines_.offset_of({row, col});
  LineStore removed = lines_.substore(begin, end);
  lines_.erase(begin, end);
  after_erase({row, 0}, {row, end - begin});
  col = 0;
  return removed;
}

LineStore TextBuffer::delete_word_forward(std::uint64_t row, std::uint64_t& col,
                                          std::string_view delimiters) {
  if (row >= line_count() || col >= line_length(row)) return {};
  const zan::ByteSet set = zan::byte_set(delimiters);
  const std::uint64_t begin = lines_.offset_of({row, col});
  const std::uint64_t line_end = lines_.line_end(row);
  const std::uint64_t word = zan::scan_forward(lines_, begin, line_end, set, false);
  const std::uint64_t end = zan::scan_forward(lines_, word, line_end, set, true);
  LineStore removed = lines_.substore(begin, end);
  lines_.erase(begin, end);
  after_erase({row, col}, {row, col + (end - begin)});
  return removed;
}

LineStore TextBuffer::delete_word_backward(std::uint64_t& row, std::uint64_t& col,
                                           std::string_view delimiters) {
  if (row >= line_count()) return {};
  if (col == 0) {
    if (row == 0) return {};
    col = line_length(--row);
    join_with_next(row);
  }
  const zan::ByteSet set = zan::byte_set(delimiters);
  const std::uint64_t line_begin = lines_.line_start(row);
  const std::uint64_t end = lines_.offset_of({row, col});
  col = end - line_begin;
  if (col == 0) return {};
  const std::uint64_t word_end = zan::scan_backward(lines_, line_begin, end, set, false);
  const std::uint64_t begin = zan::scan_backward(lines_, line_begin, word_end, set, true);
  col = begin - line_begin;
  LineStore removed = lines_.substore(begin, end);
  lines_.erase(begin, end);
  after_erase({row, col}, {row, col + (end - begin)});
  return removed;
}

void TextBuffer::insert_text(std::uint64_t& row, std::uint64_t& col, const LineStore& text) {
  if (text.empty()) return;
  const LineStore lines = text.with_literals_as_breaks();
  ensure_row(row);
  const std::uint64_t clamped = std::min(col, line_length(row));
  lines_.insert(lines_.offset_of({row, clamped}), lines);
  const Position at{row, clamped};
  const std::uint64_t breaks = lines.line_count() - 1;
  const std::uint64_t last_length = lines.line_length(breaks);
  const Position end =
      breaks == 0 ? Position{row, clamped + last_length} : Position{row + breaks, last_length};
  after_edit({.begin = at, .end = at, .end_now = end});
  // A column beyond the line's end stays as far beyond it.
  col = breaks == 0 ? col + last_length : last_length;
  row = end.row;
}

void TextBuffer::replace_in_line(std::uint64_t row, std::uint64_t col, std::uint64_t length,
                                 std::string_view bytes) {
  const std::uint64_t begin = lines_.offset_of({row, col});
  const std::uint64_t end = std::min(begin + length, lines_.line_end(row));
  if (lines_.slice(begin, end) == bytes) return;
  lines_.erase(begin, end);
  lines_.insert_bytes(begin, bytes);
  modified_ = true;
}

void TextBuffer::transform_span(Position start, Position end, char (*change)(char)) {
  const std::uint64_t first = lines_.offset_of(start);
  const std::uint64_t last = end.row < line_count() ? lines_.offset_of(end) : lines_.byte_count();
  std::array<char, 256> changed_byte{};
  for (std::size_t i = 0; i < changed_byte.size(); ++i)
    changed_byte[i] = change(static_cast<char>(static_cast<unsigned char>(i)));
  LineStoreBuilder builder;
  builder.append(lines_, 0, first);
  zan::PieceWalker walker(lines_, first, last);
  bool changed = false;
  std::string bytes;
  for (zan::Chunk chunk; walker.next(chunk);) {
    changed_byte['\n'] = chunk.literal ? change('\n') : '\n';
    for (std::string_view rest = chunk.bytes; !rest.empty(); rest.remove_prefix(bytes.size())) {
      bytes.assign(rest.substr(0, kCacheful));
      for (char& c : bytes) c = changed_byte[zan::to_byte(c)];
      changed = changed || bytes != rest.substr(0, bytes.size());
      chunk.literal ? builder.append_bytes(bytes) : builder.append_text(bytes);
    }
  }
  if (!changed) return;
  builder.append(lines_, last, lines_.byte_count());
  replace_lines(builder.finish());
}

// ---- spans and lines

LineStore TextBuffer::delete_span(std::uint64_t r1, std::uint64_t c1, std::uint64_t r2, std::uint64_t c2) {
  LineStore removed = text_in_span(r1, c1, r2, c2);
  if (removed.empty()) return removed;
  r2 = std::min(r2, line_count() - 1);
  const Position start{r1, std::min(c1, line_length(r1))};
  const Position end{r2, std::min(c2, line_length(r2))};
  lines_.erase(lines_.offset_of(start), lines_.offset_of(end));
  after_erase(start, end);
  clamp_mark();
  return removed;
}

LineStore TextBuffer::delete_range(std::uint64_t first, std::uint64_t last) {
  if (first >= line_count() || last < first) return {};
  last = std::min(last, line_count() - 1);
  const bool to_end = last + 1 == line_count();
  const std::uint64_t begin = lines_.line_start(first);
  LineStore removed = lines_.substore(begin, lines_.line_end(last));
  removed.insert_text(removed.byte_count(), "\n");
  // The last line has no break of its own: the one before the range goes with it.
  if (to_end) {
    lines_.erase(begin == 0 ? 0 : begin - 1, lines_.byte_count());
  } else {
    lines_.erase(begin, lines_.line_start(last + 1));
  }
  after_erase({first, 0}, {last + 1, 0});
  clamp_mark();
  return removed;
}

LineStore TextBuffer::delete_line(std::uint64_t row) { return delete_range(row, row); }

void TextBuffer::append_lines(const LineStore& lines) {
  if (lines_.empty()) {
    lines_ = lines;
  } else {
    lines_.insert_text(lines_.byte_count(), "\n");
    lines_.insert(lines_.byte_count(), lines);
  }
  final_newline_ = true;
  modified_ = true;
}

void TextBuffer::insert_lines(std::uint64_t at, const LineStore& lines) {
  if (lines_.empty()) {
    lines_ = lines;
    modified_ = true;
    return;
  }
  at = std::min(at, line_count());
  if (at == line_count()) {
    lines_.insert_text(lines_.byte_count(), "\n");
    lines_.insert(lines_.byte_count(), lines);
  } else {
    const std::uint64_t begin = lines_.line_start(at);
    lines_.insert_text(begin, "\n");
    lines_.insert(begin, lines);
  }
  after_edit({.begin = {at, 0}, .end = {at, 0}, .end_now = {at + lines.line_count(), 0}});
}

// ---- the mark

void TextBuffer::set_mark(std::uint64_t row, std::uint64_t col) {
  mark_ = Position{row, col};
  clamp_mark();
}

void TextBuffer::clear_mark() { mark_.reset(); }

void TextBuffer::clamp_mark() {
  if (mark_) mark_ = lines_.position_of(lines_.offset_of(*mark_));
}

Position TextBuffer::moved(Position at, const Edit& edit) {
  if (at < edit.begin) return at;
  if (at < edit.end) return edit.end_now;
  if (at.row == edit.end.row) return {edit.end_now.row, edit.end_now.col + (at.col - edit.end.col)};
  return {edit.end_now.row + (at.row - edit.end.row), at.col};
}

void TextBuffer::after_edit(const Edit& edit) {
  if (mark_) mark_ = moved(*mark_, edit);
  modified_ = true;
}

void TextBuffer::after_erase(Position begin, Position end) {
  after_edit({.begin = begin, .end = end, .end_now = begin});
}

void TextBuffer::join_with_next(std::uint64_t row) {
  const std::uint64_t end = lines_.line_end(row);
  const std::uint64_t length = end - lines_.line_start(row);
  lines_.erase(end, end + 1);
  const Position next_line{row + 1, 0};
  after_edit({.begin = next_line, .end = next_line, .end_now = {row, length}});
}
