#include "screen/draw.h"

#include <algorithm>
#include <cwchar>
#include <langinfo.h>
#include <utility>

#include "screen/curses.h"
#include "screen/output_locale.h"
#include "screen/terminal.h"

namespace zan {

namespace {

using Row = std::vector<Run>;

// What the ncurses window holds, so that rows are not written to it again.
struct Window {
  Picture picture;       // the window shows its rows, except those marked as changed
  std::vector<Row> rows; // as they were last written; missing ones are blank

  Row& row(std::size_t index) {
    if (index >= rows.size()) rows.resize(index + 1);
    return rows[index];
  }
};

Window& window() {
  static Window the_window;
  return the_window;
}

// The length of the ASCII text with which both rows begin.
std::size_t common_columns(const Row& a, const Row& b) {
  if (a.empty() || b.empty() || a.front().reverse != b.front().reverse) return 0;
  const std::string& text = b.front().text;
  const auto differs = std::ranges::mismatch(a.front().text, text).in2;
  const auto beyond = std::find_if(text.begin(), differs, [](char c) { return c < ' ' || c > '~'; });
  return static_cast<std::size_t>(beyond - text.begin());
}

// Rows are written from the top down. Each is cleared from the first change on, so that the end of a row that
// does not fit cannot spill onto one that has been written.
void put_row(int row, const Row& runs) {
  Row& before = window().row(static_cast<std::size_t>(row));
  std::size_t unchanged = common_columns(before, runs);
  if (wmove(stdscr, row, static_cast<int>(unchanged)) == ERR) return;
  before = runs;
  wclrtoeol(stdscr);
  for (const Run& run : runs) {
    if (run.reverse) wattr_on(stdscr, A_REVERSE, nullptr);
    waddnstr(stdscr, run.text.data() + unchanged, static_cast<int>(run.text.size() - unchanged));
    if (run.reverse) wattr_off(stdscr, A_REVERSE, nullptr);
    unchanged = 0;
  }
}

} // namespace

CharacterWidth character_width() {
  // nl_langinfo_l answers for another locale where glibc is linked into the program.
  static const bool shows_utf8 = [] {
    const ScopedLocale locale(users_locale());
    return std::string_view(nl_langinfo(CODESET)) == "UTF-8";
  }();
  if (!shows_utf8) return nullptr;
  return [](char32_t character) {
    const ScopedLocale locale(users_locale());
    return wcwidth(static_cast<wchar_t>(character));
  };
}

void show_view(const ScreenView& view) {
  Picture& picture = window().picture;
  update_picture(picture, view);
  const ScopedLocale locale(users_locale());
  for (std::size_t i = 0; i < picture.rows.size(); ++i) {
    PictureRow& row = picture.rows[i];
    if (std::exchange(row.changed, false)) put_row(static_cast<int>(i), row.runs);
  }
  wmove(stdscr, picture.cursor.row, picture.cursor.column);
  wrefresh(stdscr);
}

void show_bottom_row(const std::vector<Run>& runs, int column) {
  const ScopedLocale locale(users_locale());
  const int row = screen_size().rows - 1;
  put_row(row, runs);
  auto& drawn = window().picture.rows;
  if (!drawn.empty()) drawn.back().changed = true;
  wmove(stdscr, row, column);
  wrefresh(stdscr);
}

void show_page(std::span<const std::string_view> rows) {
  const ScopedLocale locale(users_locale());
  blank_window();
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (wmove(stdscr, static_cast<int>(i), 0) != ERR)
      waddnstr(stdscr, rows[i].data(), static_cast<int>(rows[i].size()));
  wrefresh(stdscr);
  blank_window(); // the next drawing must not rely on the rows of this one
}

void blank_window() {
  werase(stdscr);
  window() = {};
}

void screen_repaint() {
  if (!screen_was_started()) return;
  blank_window();
  wclear(stdscr);
}

} // namespace zan
