#include "screen/picture.h"

#include <gtest/gtest.h>

#include "screen/prompt_editor.h"

namespace {

using zan::Corner;
using zan::Position;
using zan::ScreenView;

std::string text_of(const std::vector<zan::Run>& runs) {
  std::string text;
  for (const zan::Run& run : runs) text += run.reverse ? "{" + run.text + "}" : run.text;
  return text;
}

// One picture for all, as the editor has.
const zan::Picture& picture_of(const ScreenView& view) {
  static zan::Picture picture;
  zan::update_picture(picture, view);
  return picture;
}

std::vector<std::string> rows_of(const ScreenView& view) {
  std::vector<std::string> rows;
  for (const auto& row : picture_of(view).rows) rows.push_back(text_of(row.runs));
  return rows;
}

int width_of(char32_t character) {
  if (character == 0x301) return 0;
  return character >= 0x1100 ? 2 : 1;
}

} // namespace

TEST(Picture, BytesOnARow) {
  struct Case {
    std::string bytes;
    std::size_t begin, end;
    int columns;
    const char* shown;
  };
  const std::vector<Case> cases{
      {"plain", 1, 3, 10, "p{la}in"},
      {"cut here", 0, 8, 3, "{cut}"},
      {"a\tb", 0, 0, 20, "a       b"},
      {"a\tb", 1, 2, 20, "a{       }b"},
      {"a\tb", 0, 0, 5, "a    "},
      {std::string("\0\x1b\x7f\n", 4), 0, 0, 20, "^@^[^?^J"},
      {"\f\f\f", 0, 0, 5, "^L^L^"},
      {"abc\rX\b\b\bYZ", 0, 0, 20, "YZc"},
      {"caf\xc3\xa9!", 0, 0, 20, "caf\xc3\xa9 !"},
      {"\xe4\xb8\xad|\xf0\x9f\x99\x82|", 0, 0, 20, "\xe4\xb8\xad |\xf0\x9f\x99\x82  |"},
      {"\xe4\xb8\xad", 0, 0, 2, "??"},           // cut by the edge
      {"a\xc3\xa9z", 0, 2, 20, "{a?}?z"},        // by the end of the selection
      {"a\xc3\xa9z", 1, 3, 20, "a{\xc3\xa9 }z"}, // selected as a whole
      {"e\xcc\x81", 0, 0, 20, "e??"},            // combining
      {"\xe4\xb8\xad\rab", 0, 0, 20, "ab "},     // overwritten
      {"\xe4\xb8\xad\b\b.", 0, 0, 20, " . "},    // in its second half
      {"\xe9\x80\xff", 0, 0, 20, "???"},
      {"\xc2\x85|\xed\xa0\x80", 0, 0, 20, "??|???"},
      {"x", 0, 0, 0, ""},
  };
  for (const auto& [bytes, begin, end, columns, shown] : cases)
    EXPECT_EQ(text_of(zan::display_runs(bytes, begin, end, columns, width_of)), shown) << bytes;
  EXPECT_EQ(text_of(zan::display_runs("\xe9\x80\xff|\xc2\x85", 0, 0, 20, nullptr)), "M-i~@~?|M-B~E");
}

TEST(Picture, CornerFollowsTheCursor) {
  ScreenView view;
  const auto corner = [&](Position cursor, Corner before) {
    view.cursor = cursor;
    view.corner = before;
    return zan::corner_for_cursor(view);
  };
  EXPECT_EQ(corner({20, 0}, {0, 0}), (Corner{0, 0})) << "the last row";
  EXPECT_EQ(corner({21, 0}, {0, 0}), (Corner{1, 0})) << "below";
  EXPECT_EQ(corner({3, 0}, {10, 0}), (Corner{3, 0})) << "above";
  EXPECT_EQ(corner({0, 200}, {0, 0}), (Corner{0, 122})) << "right";
  EXPECT_EQ(corner({0, 78}, {0, 0}), (Corner{0, 0})) << "the last but one column";
  EXPECT_EQ(corner({0, 79}, {0, 0}), (Corner{0, 1})) << "the last column";
  EXPECT_EQ(corner({0, 3}, {0, 122}), (Corner{0, 0})) << "left, near the start";
  EXPECT_EQ(corner({0, 50}, {0, 122}), (Corner{0, 46})) << "left";
  view.line_numbers = true;
  EXPECT_EQ(corner({8, 77}, {0, 0}), (Corner{0, 1}));
  view.line_numbers = false;
  view.truncate = true;
  EXPECT_EQ(corner({0, 200}, {0, 9}), (Corner{0, 0}));
  for (const auto& [top, bottom] : {std::pair(5, 20), {20, 5}}) { // a band, given either way
    view.top_margin = top;
    view.bottom_margin = bottom;
    EXPECT_EQ(corner({20, 0}, {0, 0}), (Corner{1, 0})) << "below the band";
    EXPECT_EQ(corner({13, 0}, {10, 0}), (Corner{9, 0})) << "above it";
    EXPECT_EQ(corner({3, 0}, {10, 0}), (Corner{0, 0})) << "above it, near the top";
  }
  view.rows = 6; // of which three are text: the band is the lowest of them
  EXPECT_EQ(corner({9, 0}, {2, 0}), (Corner{7, 0}));
  EXPECT_EQ(corner({9, 0}, {9, 0}), (Corner{7, 0}));
}

TEST(Picture, RowsOfTheScreen) {
  using Rows = std::vector<std::string>;
  ScreenView view;
  view.text = zan::LineStore::from_text("zero\none\ntwo is long\nthree");
  view.rows = 8;
  view.columns = 10;
  view.status = "status line";
  view.message = "message";
  view.selection = {{0, 2}, {2, 3}};
  view.cursor = {2, 3};
  EXPECT_EQ(rows_of(view), (Rows{"ze{ro}", "{one}", "{two} is lon", "three", "[EOB]", "----------",
                                 "status lin", "message"}));
  EXPECT_EQ(picture_of(view).cursor, (zan::ScreenCell{2, 3}));

  view.line_numbers = true;
  view.corner = {2, 1};
  view.screen_lines = 2;
  EXPECT_EQ(rows_of(view),
            (Rows{"3 {wo} is lo", "4 hree", "", "", "", "----------", "status lin", "message"}));
  EXPECT_EQ(picture_of(view).cursor, (zan::ScreenCell{0, 4}));

  EXPECT_EQ((view.cursor = {1, 0}, picture_of(view).cursor), (zan::ScreenCell{7, 7}));
  view.message = "longer than the row";
  EXPECT_EQ(picture_of(view).cursor, (zan::ScreenCell{7, 9}));

  // Rows of a very low terminal, each drawn over what is above it in the list.
  view.text = zan::LineStore::from_text("t\xe4\xb8\xad |xyz");
  view.selection = {{0, 5}, {0, 7}};
  view.corner = {};
  view.columns = 12;
  view.line_numbers = false;
  view.status = "stat";
  view.message = "m\xc3\xa9";
  view.width = width_of;
  view.rows = 1;
  EXPECT_EQ(rows_of(view), (Rows{"m\xc3\xa9   {|x}yz"})) << "no half of a character is left";
  view.message = "";
  EXPECT_EQ(rows_of(view), (Rows{"t\xe4\xb8\xad  {|x}yz"}));
  view.rows = 2;
  EXPECT_EQ(rows_of(view), (Rows{"stat {|x}yz", ""}));
  view.rows = 3;
  EXPECT_EQ(rows_of(view), (Rows{"------------", "stat", ""}));

  for (view.rows = 0; view.rows < 5; ++view.rows)
    for (view.columns = 0; view.columns < 4; ++view.columns)
      EXPECT_EQ(rows_of(view).size(), static_cast<std::size_t>(view.rows));
}

TEST(Prompt, KeysMakeAnAnswer) {
  using Outcome = zan::PromptEditor::Outcome;
  struct Case {
    std::vector<int> keys;
    Outcome last;
    std::string answer;
  };
  const std::vector<Case> cases{
      {{'a', 'b', 13}, Outcome::answered, "ab"},
      {{'a', 10}, Outcome::answered, "a"},
      {{26, 525}, Outcome::answered, "\x1a"},
      {{'a', 'b', 127, 263, 127, 'c'}, Outcome::going, "c"},
      {{0xc3, 0xa9, 127}, Outcome::going, ""},
      {{'x', 0xa9, 127}, Outcome::going, "x"},
      {{'a', 'b', 21, 27, 9}, Outcome::going, "\x1b\t"},
      {{'a', 3}, Outcome::cancelled, "a"},
      {{'a', 258}, Outcome::refused, "a"},
  };
  for (const Case& row : cases) {
    zan::PromptEditor line;
    Outcome last = Outcome::going;
    for (const int key : row.keys) last = line.type(key);
    EXPECT_EQ(last, row.last) << row.answer;
    EXPECT_EQ(line.answer(), row.answer);
  }
  zan::PromptEditor line;
  for (int i = 0; i < 511; ++i) EXPECT_EQ(line.type('0' + i % 10), Outcome::going);
  EXPECT_EQ(line.type('x'), Outcome::refused);
  EXPECT_EQ(line.answer().size(), 511U);
  EXPECT_EQ(text_of(zan::prompt_row("Command: ", line.answer(), 20, width_of).runs), "2345678901234567890");
  const auto shown = [](std::string_view answer, int columns) {
    const zan::PromptRow row = zan::prompt_row("> ", answer, columns, width_of);
    return text_of(row.runs) + "|" + std::to_string(row.columns);
  };
  EXPECT_EQ(shown("a\t\xe4\xb8\xad\xff", 20), "> a^I\xe4\xb8\xad~?|9");
  EXPECT_EQ(shown("a\xe4\xb8\xad"
                  "bc",
                  4),
            " bc|3")
      << "half a character";
  EXPECT_EQ(shown("abc", 1), "|0");
}
