#include "screen/picture.h"

#include <algorithm>

#include "text/bytes.h"

namespace zan {

namespace {

constexpr int kTabStop = 8;
constexpr int kBottomRows = 3; // a line of dashes, the status, the message

// One row while it is written, a glyph for every column.
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
  void put_each(std::string_view glyphs, bool reverse) {
    for (const char& c : glyphs) put({&c, 1}, reverse);
  }
  void tab(bool reverse) {
    do put(" ", reverse);
    while (column_ % kTabStop != 0 && column_ < columns_);
  }
  std::size_t column() const { return column_; }
  void to_start() { column_ = 0; }
  void back() { column_ -= column_ > 0 ? 1 : 0; }

  std::vector<Run> runs() const {
    std::vector<Run> result;
    for (const Run& cell : cells_) {
      if (result.empty() || result.back().reverse != cell.reverse) result.push_back({"", cell.reverse});
      result.back().text += cell.text;
    }
    return result;
  }

 private:
  // What is overwritten in part is gone as a whole. A cell without text continues the glyph before it.
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

// Text of one column a byte, most of what is ever shown, needs no cell for each column.
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

std::string line_number(const ScreenView& view, std::uint64_t row) {
  return view.line_numbers ? std::to_string(row + 1) + " " : "";
}

// Columns from the left edge of the screen to the cursor; negative when it is left of it.
std::int64_t cursor_column(const ScreenView& view, std::uint64_t left_col) {
  return static_cast<std::int64_t>(line_number(view, view.cursor.row).size()) +
         static_cast<std::int64_t>(view.cursor.col) - static_cast<std::int64_t>(left_col);
}

// The selected bytes of line `row`, which has `length` of them, as begin and end.
std::pair<std::uint64_t, std::uint64_t> selected_bytes(const ScreenView& view, std::uint64_t row,
                                                       std::uint64_t length) {
  if (!view.selection || row < view.selection->start.row || row > view.selection->end.row) return {0, 0};
  const std::uint64_t begin = row == view.selection->start.row ? view.selection->start.col : 0;
  const std::uint64_t end = row == view.selection->end.row ? view.selection->end.col : length;
  return {std::min(begin, length), std::min(end, length)};
}

struct Line {
  std::uint64_t start = 0; // offsets in the text
  std::uint64_t end = 0;
  TextView bytes; // empty when the line is too long to be looked at as a whole
};

// Most lines are short: to look for the line feed costs less than to ask the store for the line's end.
Line line_at(const LineStore& text, std::uint64_t row, std::uint64_t start) {
  constexpr std::uint64_t kShort = 256;
  TextView bytes = text.slice(start, start + kShort);
  const std::size_t length = bytes.get().find('\n');
  if (length == std::string_view::npos || text.holds_literal_breaks()) return {start, text.line_end(row), {}};
  return {start, start + length, std::move(bytes)};
}

// Makes the runs of a row, unless they have been made of the same bytes before.
template <typename MakeRuns>
void update_row(PictureRow& row, std::string_view bytes, std::size_t reverse_begin, std::size_t reverse_end,
                MakeRuns make_runs) {
  if (row.bytes == bytes && row.reverse_begin == reverse_begin && row.reverse_end == reverse_end) return;
  row = {make_runs(), std::string(bytes), reverse_begin, reverse_end};
}

void update_line(PictureRow& shown, const ScreenView& view, std::uint64_t row, const Line& line) {
  const std::uint64_t length = line.end - line.start;
  const std::string number = line_number(view, row);
  const std::uint64_t prefix = number.size();
  const std::uint64_t width = static_cast<std::uint64_t>(std::max(view.columns, 0));
  const std::uint64_t skipped = view.truncate ? 0 : std::min(view.corner.left_col, length);
  const std::uint64_t last = std::min(length, skipped + width - std::min(width, prefix));
  const TextView visible = line.bytes.size() != 0 ? TextView(line.bytes.get().substr(skipped, last - skipped))
                                                  : view.text.slice(line.start + skipped, line.start + last);
  const std::string numbered = prefix != 0 ? number + std::string(visible.get()) : "";
  const std::string_view bytes = prefix != 0 ? numbered : visible.get();
  const auto [begin, end] = selected_bytes(view, row, length);
  const auto column = [&, from = skipped](std::uint64_t byte) {
    return static_cast<std::size_t>(prefix + (byte > from ? byte - from : 0));
  };
  const std::size_t reverse_begin = column(begin);
  const std::size_t reverse_end = end > begin ? column(end) : reverse_begin;
  update_row(shown, bytes, reverse_begin, reverse_end,
             [&] { return display_runs(bytes, reverse_begin, reverse_end, view.columns, view.width); });
}

// A text of the program's own, in which characters stand side by side.
void put_plain(RowCells& cells, std::string_view text, CharacterWidth width, bool reverse) {
  while (!text.empty()) {
    const auto [code, length] = width != nullptr ? utf8_character(text) : Utf8Character{};
    const int wide = length > 0 ? width(code) : 0;
    const auto columns = static_cast<std::size_t>(std::max(wide, 0));
    if (wide > 0 && cells.put_wide(text.substr(0, length), columns, columns, reverse)) {
      text.remove_prefix(length);
    } else {
      put_byte(cells, text.front(), width != nullptr, reverse);
      text.remove_prefix(1);
    }
  }
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

// `above` written over `below`, of which the rest stays.
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

// One of the rows below the text. On a very low terminal it lies over a row of the text.
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
    picture.rows.assign(rows, {});
    picture.columns = view.columns;
  }
  const std::uint64_t lines = view.text.line_count();
  std::uint64_t row = view.corner.top_row;
  std::uint64_t start = view.text.line_start(row);
  for (int i = 0; i < std::min(above_bottom, view.rows); ++i, ++row) {
    PictureRow& shown = picture.rows[static_cast<std::size_t>(i)];
    if (i >= text_rows(view) || row > lines) {
      shown = {};
    } else if (row == lines) {
      update_plain_row(shown, view, "[EOB]");
    } else {
      const Line line = line_at(view.text, row, start);
      update_line(shown, view, row, line);
      start = line.end + 1;
    }
  }
  update_bottom_row(picture, view, view.rows - 3,
                    std::string(static_cast<std::size_t>(std::max(view.columns, 1)), '-'));
  update_bottom_row(picture, view, view.rows - 2, view.status);
  update_bottom_row(picture, view, view.rows - 1, view.message);
  picture.cursor = cursor_cell(view).value_or(behind_message(view));
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
