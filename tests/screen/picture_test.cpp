#include "screen/picture.h"

#include <gtest/gtest.h>
#include <sstream>

#include "screen/keys.h"
#include "screen/prompt_editor.h"
#include "tests/screen/key_names.h"
#include "tests/sessions/text_forms.h"

namespace {

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
  expect_rows("screen/picture", [](const Fields& row) {
    std::size_t begin = 0, end = 0;
    std::istringstream(row[1]) >> begin >> end;
    return text_of(zan::display_runs(row[0], begin, end, std::stoi(row[2]), width_of));
  });
  EXPECT_EQ(text_of(zan::display_runs("\xe9\x80\xff|\xc2\x85", 0, 0, 20, nullptr)), "M-i~@~?|M-B~E");
}

TEST(Picture, CornerFollowsTheCursor) {
  expect_rows("screen/corner", [](const Fields& row) {
    ScreenView view;
    std::istringstream(row[0]) >> view.rows >> view.top_margin >> view.bottom_margin;
    view.line_numbers = row[1] == "numbers";
    view.truncate = row[1] == "truncate";
    std::istringstream(row[2]) >> view.cursor.row >> view.cursor.col;
    std::istringstream(row[3]) >> view.corner.top_row >> view.corner.left_col;
    const zan::Corner corner = zan::corner_for_cursor(view);
    return std::to_string(corner.top_row) + " " + std::to_string(corner.left_col);
  });
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
  using enum zan::PromptEditor::Outcome;
  expect_rows("screen/prompt", [](const Fields& row) {
    zan::PromptEditor line;
    auto last = going;
    for (const int key : key_codes(row[0])) last = line.type(key);
    const char* const ends = last == answered ? "answers" : last == refused ? "refuses" : "cancelled";
    return (last == going ? "goes on" : ends) + (" \"" + line.answer() + "\"");
  });
  zan::PromptEditor line;
  for (int i = 0; i < 511; ++i) EXPECT_EQ(line.type('0' + i % 10), going);
  EXPECT_EQ(line.type('x'), refused);
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
  line.type(zan::kBackspace);
  EXPECT_EQ(line.answer().size(), 510U);
}
