// The picture of the screen in the README is drawn from what a terminal really shows. With
// ZAN_UPDATE_PICTURES set it is written, otherwise compared.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>

#include <gtest/gtest.h>

#include "tests/screen/terminal_driver.h"

namespace {

constexpr int kCellWidth = 9;
constexpr int kCellHeight = 19;

std::string escaped(char c) {
  static const std::map<char, std::string> kNames{{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}};
  const auto name = kNames.find(c);
  return name == kNames.end() ? std::string{c} : name->second;
}

std::string pixels(int cells, int size = kCellWidth) { return std::to_string(cells * size); }

std::string box(int column, int row, int columns, const std::string& look) {
  return "<rect class=\"" + look + "\" x=\"" + pixels(column) + "\" y=\"" + pixels(row, kCellHeight) +
         "\" width=\"" + pixels(columns) + "\" height=\"" + pixels(1, kCellHeight) + "\"/>";
}

// One row; what stands between braces is in reverse video.
std::string drawn_row(const std::string& text, int row) {
  std::string boxes, letters;
  int column = 0;
  bool reverse = false;
  for (const char c : text) {
    if (c == '{' || c == '}') {
      letters += c == '{' ? "<tspan class=\"reverse\">" : "</tspan>";
      reverse = c == '{';
      continue;
    }
    if (reverse) boxes += box(column, row, 1, "mark");
    letters += escaped(c);
    ++column;
  }
  return boxes + "<text xml:space=\"preserve\" x=\"0\" y=\"" + std::to_string(row * kCellHeight + 14) +
         "\" textLength=\"" + pixels(column) + "\">" + letters + "</text>\n";
}

std::string drawn(const Shown& shown, int columns) {
  const std::string size = pixels(columns) + " " + pixels(static_cast<int>(shown.rows.size()), kCellHeight);
  std::string picture =
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + size +
      "\"><title>ZAN on a terminal</title><style>.screen{fill:#10151c}.mark{fill:#cfd8dc}"
      ".cursor{fill:#e0a030}text{font:15px monospace;fill:#cfd8dc}.reverse{fill:#10151c}</style>\n" +
      "<rect class=\"screen\" width=\"100%\" height=\"100%\"/>\n" +
      box(shown.cursor_column, shown.cursor_row, 1, "cursor") + "\n";
  for (std::size_t row = 0; row < shown.rows.size(); ++row)
    if (!shown.rows[row].empty()) picture += drawn_row(shown.rows[row], static_cast<int>(row));
  return picture + "</svg>\n";
}

} // namespace

TEST(ReadmePicture, IsWhatTheScreenShows) {
  const std::string path = ZAN_DOCS "/screen.svg";
  TerminalOptions options;
  options.text = "Shopping\n\n  bread and butter\n  two pounds of apples\n  a dozen eggs\n";
  options.rows = 12;
  options.columns = 72;
  options.term = "vt220";
  TerminalDriver zan(options);
  zan.enter_screen();
  zan.type("\x1b[B\x1b[B\x1b[B\x1bOn\x1bOq\x1bOq\x1bOq"); // down three lines, SELECT, three words on
  Shown last;
  const auto two_words_selected = [&](const Shown& shown) {
    last = shown;
    return shown.row(3) == "{  two pounds }of apples" && shown.cursor_column == 13;
  };
  ASSERT_TRUE(zan.wait_until(two_words_selected, "two words selected"));
  const std::string picture = drawn(last, options.columns);
  if (std::getenv("ZAN_UPDATE_PICTURES") != nullptr) std::ofstream(path) << picture;
  std::ifstream kept(path);
  EXPECT_EQ(picture, std::string(std::istreambuf_iterator<char>(kept), {}));
}
