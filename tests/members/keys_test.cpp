#include "app/editor.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

#include "tests/screen/key_names.h"
#include "tests/sessions/text_forms.h"

namespace {

constexpr char kCursor = '^', kMark = '{';

// Where a sign stands in a text without the other one.
std::optional<zan::Position> place_of(char sign, std::string text, char other) {
  std::erase(text, other);
  const std::size_t at = text.find(sign);
  if (at == std::string::npos) return std::nullopt;
  return zan::LineStore::from_text(text).position_of(at);
}

struct Scene : Editor {
  Scene() : Editor({}, std::nullopt, std::nullopt, false, false, std::nullopt) {}

  void set_up(std::string text) {
    const zan::Position cursor = place_of(kCursor, text, kMark).value();
    const auto mark = place_of(kMark, text, kCursor);
    std::erase(text, kCursor);
    std::erase(text, kMark);
    set_paste_text(Text::from_text("k"));
    deleted_char = deleted_word = deleted_line = Text::from_text("k");
    current.replace_lines(Text::from_text(text));
    if (mark) current.set_mark(mark->row, mark->col);
    cursor_row = cursor.row;
    cursor_col = cursor.col;
    undo_stack.clear();
    status_message.clear();
  }

  std::string shown() {
    Text text = current.lines();
    text.insert_text(text.offset_of({cursor_row, cursor_col}), "^");
    if (!current.has_mark()) return text.to_string();
    const zan::Position mark{current.mark_row(), current.mark_col()};
    const bool after = zan::Position{cursor_row, cursor_col} < mark;
    text.insert_text(text.offset_of(mark) + (after ? 1 : 0), "{");
    return text.to_string();
  }

  // The registers that have changed.
  std::string told() {
    std::string told;
    const std::pair<const char*, Text> registers[] = {
        {"C=", deleted_char}, {"W=", deleted_word}, {"L=", deleted_line}, {"P=", paste_text_content()}};
    for (const auto& [name, text] : registers)
      if (text != Text::from_text("k")) told += name + text.to_string() + ".";
    return told;
  }

  void press(const std::string& keys) {
    for (const int code : key_codes(keys)) handle_screen_key(code);
  }
};

} // namespace

TEST(Keys, ChangeTextAndCursorAndRegisters) {
  expect_rows("members/edits", [](const Fields& row) {
    Scene scene;
    std::istringstream commands(row[1]);
    for (std::string line; std::getline(commands, line, ';');) scene.execute_command(line, false);
    scene.set_up(row[3]);
    scene.press(row[2]);
    EXPECT_LE(scene.cursor_col, scene.current.line_length(scene.cursor_row)) << row[0];
    return scene.shown() + " / " + scene.told() + scene.status_message +
           (scene.undo_stack.empty() ? "" : "!");
  });
}

TEST(Keys, MoveTheCursor) {
  std::string text;
  for (int i = 0; i < 10; ++i) text += "foo, bar_$1;x\n\n..a b\nlast.\n";
  expect_rows("members/moves", [&](const Fields& row) {
    Scene scene;
    scene.current.set_text(text);
    scene.current.clear_modified();
    scene.current.set_mark(3, 2);
    if (row[2] == "backward") scene.direction = Editor::Direction::Backup;
    std::istringstream(row[1]) >> scene.cursor_row >> scene.cursor_col;
    std::string places;
    for (int times = std::stoi(row[3]); times > 0; --times) {
      scene.press(row[4]);
      places += std::to_string(scene.cursor_row) + " " + std::to_string(scene.cursor_col) + ", ";
    }
    EXPECT_FALSE(scene.current.modified()) << row[0];
    EXPECT_TRUE(scene.current.mark_row() == 3 && scene.current.mark_col() == 2) << row[0];
    return places + scene.status_message;
  });
}

TEST(Keys, DelimitersMayBeWhiteSpaceOnly) {
  Scene scene;
  EXPECT_TRUE(scene.is_delim(',') && scene.is_delim('\t') && scene.is_delim('~'));
  EXPECT_FALSE(scene.is_delim('$') || scene.is_delim('_') || scene.is_delim('a') || scene.is_delim('\v'));
  scene.word_delimiters_on = false;
  for (const char c : std::string_view(" \t\n\v\f\r")) EXPECT_TRUE(scene.is_delim(c));
  scene.current.set_text("foo,bar\tbaz");
  scene.press("{KP1}");
  EXPECT_EQ(scene.cursor_col, 8u);
}
