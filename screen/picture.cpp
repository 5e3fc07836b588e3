#include "screen/picture.h"

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

#include "text/bytes.h"

namespace zan {

namespace {

constexpr int kTabStop = 8;
constexpr int kBottomRows = 3; // a line of dashes, the status, the message

// One row under construction, a glyph for each column.
class RowCells {
 public:
  explicit RowCells(int columns) : columns_(static_cast<std::size_t>(std::max(columns, 0))) {}

  void put(std::string_view glyph, bool reverse) {
    if (column_ >= columns_) return;
    if (column_ == cells_.size()) cells_.emplace_back();
    else break_up(column_);
    cells_[column_++] = {std::string(glyph), reverse};
  }
  // A glyph of `wide` columns in the first of `columns`; false when so many are not left.
  bool put_wide(std::string_view glyph, std::size_t wide, std::size_t columns, bool reverse) {
    if (columns_ - column_ < columns) return false;
    put(glyph, reverse);
    for (std::size_t i = 1; i < columns; ++i) put(i < wide ? "" : " ", reverse);
    return true;
  }
  void put_each(std::string_view glyphs, bool reverse = false) {
    for (const char& c : glyphs) put({&c, 1}, reverse);
  }
  void tab(bool reverse) {
    do put(" ", reverse);
    while (column_ % kTabStop != 0 && column_ < columns_);
  }
  std::size_t column() const { return column_; }
  void to_start() { column_ = 0; }
  void back() { column_ -= column_ > 0 ? 1 : 0; }

  // Those from column `first` on. A blank replaces the second half of a glyph.
  std::vector<Run> runs(std::size_t first = 0) const {
    std::vector<Run> result;
    if (first > 0 && first < cells_.size() && cells_[first].text.empty()) result.push_back({" "});
    for (const Run& cell : std::span(cells_).subspan(first)) {
      if (result.empty() || result.back().reverse != cell.reverse) result.push_back({"", cell.reverse});
      result.back().text += cell.text;
    }
    return result;
  }

 private:
  // A wide glyph that is overwritten in part becomes blanks. A cell without text is the second half of one.
  void break_up(std::size_t column) {
    while (column > 0 && cells_[column].text.empty()) --column;
    do cells_[column++].text = " ";
    while (column < cells_.size() && cells_[column].text.empty());
  }

  std::size_t columns_;
  std::size_t column_ = 0;
  std::vector<Run> cells_;
};

void put_byte(RowCells& cells, char c, bool utf8, bool reverse) {
  if (c >= ' ' && c <= '~') cells.put({&c, 1}, reverse);
  else if (c == '\t') cells.tab(reverse);
  else if (c == '\r') cells.to_start();
  else if (c == '\b') cells.back();
  else if (utf8 && to_byte(c) >= 128) cells.put("?", reverse);
  else cells.put_each(visible_byte(c), reverse);
}

// Most text takes one column a byte: then no cells are needed.
bool is_ascii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

std::vector<Run> ascii_runs(std::string_view text, std::size_t reverse_begin, std::size_t reverse_end,
                            int columns) {
  text = text.substr(0, static_cast<std::size_t>(std::max(columns, 0)));
  reverse_end = std::min(reverse_end, text.size());
  reverse_begin = std::min(reverse_begin, reverse_end);
  std::vector<Run> runs;
  const auto add = [&](std::size_t begin, std::size_t end, bool reverse) {
    if (begin < end) runs.push_back({std::string(text.substr(begin, end - begin)), reverse});
  };
  add(0, reverse_begin, false);
  add(reverse_begin, reverse_end, true);
  add(reverse_end, text.size(), false);
  return runs;
}

std::string line_number(std::uint64_t row) { return std::to_string(row + 1) + " "; }

std::size_t number_columns(const ScreenView& view, std::uint64_t row) {
  return view.line_numbers ? line_number(row).size() : 0;
}

// The cursor's column on the screen; negative when it is left of it.
std::int64_t cursor_column(const ScreenView& view, std::uint64_t left_col) {
  return static_cast<std::int64_t>(number_columns(view, view.cursor.row)) +
         static_cast<std::int64_t>(view.cursor.col) - static_cast<std::int64_t>(left_col);
}

// The part of line `row` that its row of the screen has room for, in bytes of the line, and the number before
// it.
struct LinePart {
  std::size_t number_columns = 0;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

LinePart visible_part(const ScreenView& view, std::uint64_t row, std::uint64_t length) {
  const std::size_t number = number_columns(view, row);
  const std::uint64_t width = static_cast<std::uint64_t>(std::max(view.columns, 0));
  const std::uint64_t begin = view.truncate ? 0 : std::min(view.corner.left_col, length);
  const std::uint64_t end = std::min(length, begin + width - std::min<std::uint64_t>(width, number));
  return {number, begin, end};
}

// The columns of the row in reverse video, as begin and end.
std::pair<std::size_t, std::size_t> selected_columns(const ScreenView& view, std::uint64_t row,
                                                     const LinePart& part) {
  if (!view.selection || row < view.selection->start.row || row > view.selection->end.row) return {};
  const auto column = [&](std::uint64_t col) {
    return static_cast<std::size_t>(part.number_columns + std::clamp(col, part.begin, part.end) - part.begin);
  };
  return {row == view.selection->start.row ? column(view.selection->start.col) : column(part.begin),
          row == view.selection->end.row ? column(view.selection->end.col) : column(part.end)};
}

// Makes the runs of a row, unless they have been made of the same bytes before.
template <typename MakeRuns>
void update_row(PictureRow& row, std::string_view bytes, std::size_t reverse_begin, std::size_t reverse_end,
                MakeRuns make_runs) {
  if (row.bytes == bytes && row.reverse_begin == reverse_begin && row.reverse_end == reverse_end) return;
  row = {make_runs(), std::string(bytes), reverse_begin, reverse_end, true};
}

void update_line_row(PictureRow& shown, const ScreenView& view, std::uint64_t row, const LinePart& part,
                     std::string_view bytes) {
  std::string numbered;
  if (view.line_numbers) bytes = numbered = line_number(row) + std::string(bytes);
  const auto [begin, end] = selected_columns(view, row, part);
  update_row(shown, bytes, begin, end, [&, first = begin, last = end] {
    return display_runs(bytes, first, last, view.columns, view.width);
  });
}

// The line that begins at offset `start` of the text; returns the offset of its end.
std::uint64_t update_line(PictureRow& shown, const ScreenView& view, std::uint64_t row, std::uint64_t start) {
  constexpr std::uint64_t kShortLine = 128; // most are shorter: finding the line feed is faster than line_end
  const TextView nearby = view.text.slice(start, start + kShortLine);
  const std::size_t length = nearby.get().find('\n');
  if (length != std::string_view::npos && !view.text.holds_literal_breaks()) {
    const LinePart part = visible_part(view, row, length);
    const std::size_t begin = in_memory(part.begin);
    update_line_row(shown, view, row, part, nearby.get().substr(begin, in_memory(part.end) - begin));
    return start + length;
  }
  const std::uint64_t end = view.text.line_end(row);
  const LinePart part = visible_part(view, row, end - start);
  const TextView bytes = view.text.slice(start + part.begin, start + part.end);
  update_line_row(shown, view, row, part, bytes.get());
  return end;
}

// A text of the program's own: its characters stand side by side. `put_other` is for a byte that is no part
// of a character with a width.
template <typename PutOther>
void put_characters(RowCells& cells, std::string_view text, CharacterWidth width, bool reverse,
                    PutOther put_other) {
  while (!text.empty()) {
    const auto [code, length] = width != nullptr ? utf8_character(text) : Utf8Character{};
    const int wide = length > 0 ? width(code) : 0;
    const auto columns = static_cast<std::size_t>(std::max(wide, 0));
    if (wide > 0 && cells.put_wide(text.substr(0, length), columns, columns, reverse)) {
      text.remove_prefix(length);
    } else {
      put_other(text.front());
      text.remove_prefix(1);
    }
  }
}

void put_plain(RowCells& cells, std::string_view text, CharacterWidth width, bool reverse) {
  put_characters(cells, text, width, reverse, [&](char c) { put_byte(cells, c, width != nullptr, reverse); });
}

struct PlainText {
  std::vector<Run> runs;
  std::size_t end = 0; // the column behind its last byte
};

PlainText plain_text(const ScreenView& view, std::string_view text) {
  if (is_ascii(text)) {
    const auto room = static_cast<std::size_t>(std::max(view.columns, 0));
    return {ascii_runs(text, 0, 0, view.columns), std::min(text.size(), room)};
  }
  RowCells cells(view.columns);
  put_plain(cells, text, view.width, false);
  return {cells.runs(), cells.column()};
}

// `above` written over `below`, whose end stays.
std::vector<Run> overwrite(const ScreenView& view, const std::vector<Run>& below,
                           const std::vector<Run>& above) {
  RowCells cells(view.columns);
  for (const auto* runs : {&below, &above}) {
    cells.to_start();
    for (const Run& run : *runs) put_plain(cells, run.text, view.width, run.reverse);
  }
  return cells.runs();
}

void update_plain_row(PictureRow& shown, const ScreenView& view, std::string_view text) {
  update_row(shown, text, 0, 0, [&] { return plain_text(view, text).runs; });
}

// One of the rows below the text. On a very low terminal it overwrites a row of the text.
void update_bottom_row(Picture& picture, const ScreenView& view, int row, std::string_view text) {
  if (row < 0 || row >= view.rows) return;
  PictureRow& shown = picture.rows[static_cast<std::size_t>(row)];
  if (view.rows <= kBottomRows) shown.runs = overwrite(view, shown.runs, plain_text(view, text).runs);
  else update_plain_row(shown, view, text);
}

// The rows, counted from 0, between which the cursor stays.
std::pair<int, int> cursor_band(const ScreenView& view) {
  const int rows = text_rows(view);
  int low = view.top_margin > 0 ? view.top_margin - 1 : 0;
  int high = view.bottom_margin > 0 ? view.bottom_margin - 1 : rows - 1;
  if (view.top_margin > 0 || view.bottom_margin > 0) {
    low = std::min(low, rows - 1);
    high = std::min(high, rows - 1);
    if (low > high) std::swap(low, high);
  }
  return {low, high};
}

std::uint64_t left_col_for_cursor(const ScreenView& view) {
  const std::uint64_t left = view.corner.left_col;
  const std::uint64_t col = view.cursor.col;
  const std::int64_t column = cursor_column(view, left);
  if (column < 0) return col >= 5 ? col - 4 : 0;
  if (column < view.columns - 1) return left;
  const std::int64_t prefix = column - static_cast<std::int64_t>(col) + static_cast<std::int64_t>(left);
  const std::int64_t room = std::max<std::int64_t>(1, view.columns - prefix - 1);
  return col + 1 - std::min(col + 1, static_cast<std::uint64_t>(room));
}

std::optional<ScreenCell> cursor_cell(const ScreenView& view) {
  const std::int64_t column = cursor_column(view, view.corner.left_col);
  if (view.cursor.row < view.corner.top_row || column < 0 || column >= view.columns) return std::nullopt;
  const std::uint64_t row = view.cursor.row - view.corner.top_row;
  if (row >= static_cast<std::uint64_t>(text_rows(view))) return std::nullopt;
  return ScreenCell{static_cast<int>(row), static_cast<int>(column)};
}

ScreenCell behind_message(const ScreenView& view) {
  const int end = static_cast<int>(plain_text(view, view.message).end);
  return {view.rows - 1, std::min(end, view.columns - 1)};
}

} // namespace

int text_rows(const ScreenView& view) {
  const int rows = std::max(1, view.rows - kBottomRows);
  return view.screen_lines > 0 ? std::max(1, std::min(view.screen_lines, rows)) : rows;
}

Corner corner_for_cursor(const ScreenView& view) {
  Corner corner = view.corner;
  const auto [low, high] = cursor_band(view);
  const std::uint64_t row = view.cursor.row;
  const std::uint64_t first = static_cast<std::uint64_t>(low);
  const std::uint64_t last = static_cast<std::uint64_t>(high);
  if (row < corner.top_row + first) corner.top_row = row >= first ? row - first : 0;
  else if (row > corner.top_row + last) corner.top_row = row - last;
  corner.left_col = view.truncate ? 0 : left_col_for_cursor(view);
  return corner;
}

void update_picture(Picture& picture, const ScreenView& view) {
  const int above_bottom = std::max(1, view.rows - kBottomRows);
  const auto rows = static_cast<std::size_t>(std::max(view.rows, 0));
  if (picture.rows.size() != rows || picture.columns != view.columns || view.rows <= kBottomRows) {
    picture.rows.assign(rows, PictureRow());
    picture.columns = view.columns;
  }
  const std::uint64_t lines = view.text.line_count();
  std::uint64_t row = view.corner.top_row;
  std::uint64_t start = view.text.line_start(row);
  const int shown_lines = text_rows(view);
  for (int i = 0; i < std::min(above_bottom, view.rows); ++i, ++row) {
    PictureRow& shown = picture.rows[static_cast<std::size_t>(i)];
    if (i < shown_lines && row < lines) start = update_line(shown, view, row, start) + 1;
    else update_plain_row(shown, view, i < shown_lines && row == lines ? "[EOB]" : "");
  }
  update_bottom_row(picture, view, view.rows - 3,
                    std::string(static_cast<std::size_t>(std::max(view.columns, 1)), '-'));
  update_bottom_row(picture, view, view.rows - 2, view.status);
  update_bottom_row(picture, view, view.rows - 1, view.message);
  const auto cursor = cursor_cell(view);
  picture.cursor = cursor ? *cursor : behind_message(view);
}

std::vector<Run> display_runs(std::string_view bytes, std::size_t reverse_begin, std::size_t reverse_end,
                              int columns, CharacterWidth width) {
  if (is_ascii(bytes)) return ascii_runs(bytes, reverse_begin, reverse_end, columns);
  const auto reversed = [&](std::size_t i) { return i >= reverse_begin && i < reverse_end; };
  RowCells cells(columns);
  for (std::size_t i = 0; i < bytes.size();) {
    const auto [code, length] = width != nullptr ? utf8_character(bytes.substr(i)) : Utf8Character{};
    const int wide = length > 0 && reversed(i) == reversed(i + length - 1) ? width(code) : 0;
    const bool whole = wide > 0 && cells.put_wide(bytes.substr(i, length), static_cast<std::size_t>(wide),
                                                  length, reversed(i));
    if (whole) {
      i += length;
      continue;
    }
    for (const std::size_t end = i + std::max<std::size_t>(length, 1); i < end; ++i)
      put_byte(cells, bytes[i], width != nullptr, reversed(i));
  }
  return cells.runs();
}

PromptRow prompt_row(std::string_view prompt, std::string_view answer, int columns, CharacterWidth width) {
  RowCells cells(std::numeric_limits<int>::max());
  cells.put_each(prompt);
  put_characters(cells, answer, width, false,
                 [&](char c) { cells.put_each(c >= ' ' && c <= '~' ? std::string(1, c) : visible_byte(c)); });
  const std::size_t shown = std::min(cells.column(), static_cast<std::size_t>(std::max(columns - 1, 0)));
  return {cells.runs(cells.column() - shown), static_cast<int>(shown)};
}

std::string visible_byte(char c) {
  const unsigned char byte = to_byte(c);
  if (byte < 128) return {'^', static_cast<char>(byte ^ 64U)};
  const char low = static_cast<char>(byte - 128);
  if (byte < 160) return {'~', static_cast<char>(byte - 64)};
  if (byte == 255) return "~?";
  return {'M', '-', low};
}

Utf8Character utf8_character(std::string_view bytes) {
  if (bytes.empty()) return {};
  const unsigned first = to_byte(bytes[0]);
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || bytes.size() < length) return {};
  char32_t code = first & (0xffU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const unsigned next = to_byte(bytes[i]);
    if ((next & 0xc0U) != 0x80) return {};
    code = code << 6 | (next & 0x3fU);
  }
  const bool too_long = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool surrogate = code >= 0xd800 && code <= 0xdfff;
  return too_long || surrogate || code < 0xa0 || code > 0x10ffff ? Utf8Character{}
                                                                 : Utf8Character{code, length};
}

} // namespace zan
