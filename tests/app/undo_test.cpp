#include "app/editor.h"

#include <gtest/gtest.h>
#include <sstream>
#include <tuple>

namespace {

using Text = Editor::Text;

std::string told(const TextBuffer& buffer) {
  std::ostringstream out;
  out << buffer.filename() << ": " << buffer.text().to_string() << buffer.modified() << buffer.has_mark()
      << buffer.mark_row() << buffer.mark_col();
  return out.str();
}

// What UNDO brings back, a line a field.
std::string kept(Editor& editor) {
  editor.save_current_buffer_state();
  std::ostringstream out;
  for (const auto& [name, buffer] : editor.buffers.entries()) out << name << " is " << told(buffer) << "\n";
  out << editor.current_buffer_name << " is " << told(editor.current) << "\n"
      << editor.cursor_row << " " << editor.cursor_col << " " << editor.top_row << "\n"
      << static_cast<int>(editor.direction) << editor.overstrike << "\n"
      << editor.search_string << "\n"
      << editor.deleted_char.to_string() << "\n"
      << editor.deleted_line.to_string() << "\n"
      << editor.deleted_word.to_string();
  return out.str();
}

// Some of what it leaves alone.
auto untouched(Editor& editor) {
  return std::tie(editor.left_col, editor.match_length, editor.tab_width, editor.case_mode, editor.wrap,
                  editor.xlate_map, editor.key_definitions, editor.macros, editor.input_file,
                  editor.file_index, editor.search_exact, editor.sticky_range->first);
}

// Gives all of them values that only this version has.
void set_all(Editor& editor, std::uint64_t version, bool flag) {
  const std::string text = "v" + std::to_string(version);
  editor.find_buffer("B" + text, false);
  editor.current.set_text(text + "\n" + text + (flag ? "\n" : "\nx\n"));
  editor.current.set_filename("f" + text);
  if (flag) editor.current.clear_modified();
  else editor.current.set_mark(1, version);
  editor.set_paste_text(Text::from_text("p" + text));
  editor.cursor_row = version % 2;
  editor.cursor_col = version;
  editor.top_row = editor.left_col = editor.match_length = editor.file_index = version;
  editor.direction = flag ? Editor::Direction::Backup : Editor::Direction::Advance;
  editor.overstrike = editor.wrap = editor.search_exact = flag;
  editor.search_string = editor.case_mode = editor.input_file = text;
  editor.deleted_char = Text::from_text(text + "c");
  editor.deleted_line = Text::from_text(text + "l");
  editor.deleted_word = Text::from_text(text + "w");
  editor.tab_width = static_cast<int>(version);
  editor.xlate_map['a'] = text[1];
  editor.key_definitions[text] = text;
  editor.macros[text] = flag;
  editor.sticky_range = Editor::LineRange{version, version};
}

struct Undo : testing::Test {
  Editor editor{{"a"}, std::nullopt, std::nullopt, false, false, std::nullopt};
};

} // namespace

TEST_F(Undo, BringsBackEveryFieldAndNothingElse) {
  set_all(editor, 1, false);
  const std::string first = kept(editor);
  editor.begin_undo_unit();
  set_all(editor, 2, true);
  const std::string second = kept(editor);
  const auto settings = std::apply([](auto... field) { return std::tuple(field...); }, untouched(editor));
  for (int times = 0; times < 2; ++times) {
    EXPECT_TRUE(editor.undo_last(false));
    EXPECT_EQ(kept(editor), first);
    EXPECT_EQ(editor.status_message, "UNDO");
    EXPECT_FALSE(editor.undo_last(false));
    EXPECT_EQ(editor.status_message, "Nothing to undo");
    EXPECT_TRUE(editor.redo_last(false));
    EXPECT_EQ(kept(editor), second);
    EXPECT_EQ(editor.status_message, "REDO");
    EXPECT_FALSE(editor.redo_last(false));
    EXPECT_EQ(editor.status_message, "Nothing to redo");
    EXPECT_EQ(untouched(editor), settings);
  }
}

TEST_F(Undo, KeepsAHundredUnits) {
  for (int i = 0; i < 150; ++i) {
    editor.begin_undo_unit();
    editor.current.set_text(std::to_string(i));
  }
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(editor.undo_last(false));
  EXPECT_FALSE(editor.undo_last(false));
  EXPECT_EQ(editor.current.text().to_string(), "49");
  for (int i = 0; i < 60; ++i) EXPECT_TRUE(editor.redo_last(false));
  EXPECT_EQ(editor.current.text().to_string(), "109");
  EXPECT_TRUE(editor.undo_last(false));
  editor.begin_undo_unit();
  EXPECT_FALSE(editor.redo_last(false));
}

TEST_F(Undo, PutsTheCursorIntoTheText) {
  editor.current.set_text("abc\nde");
  editor.cursor_row = editor.cursor_col = 7;
  editor.begin_undo_unit();
  editor.undo_last(false);
  EXPECT_TRUE(editor.cursor_row == 1 && editor.cursor_col == 2);
}
