#include "app/editor.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

// What the keypad deletes, puts back, selects and inserts. In the texts "|" is the cursor and "{" the mark;
// all registers hold "k" before.
namespace {

using Act = std::function<void(Editor&)>;

zan::Position take_out(std::string& text, char sign) {
  const std::size_t at = text.find(sign);
  const auto row =
      static_cast<std::uint64_t>(std::count(text.begin(), text.begin() + std::ptrdiff_t(at), '\n'));
  const std::size_t line = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
  text.erase(at, 1);
  return {row, at - line};
}

void set_up(Editor& editor, std::string text) {
  const bool marked = text.find('{') != std::string::npos;
  const zan::Position mark = marked ? take_out(text, '{') : zan::Position{};
  const zan::Position cursor = take_out(text, '|');
  editor.set_paste_text(Editor::Text::from_text("k"));
  editor.current.replace_lines(Editor::Text::from_text(text));
  if (marked)
    editor.current.set_mark(mark.row, mark.col - (mark.row == cursor.row && mark.col > cursor.col ? 1 : 0));
  editor.cursor_row = cursor.row;
  editor.cursor_col = cursor.col;
  editor.deleted_char = editor.deleted_word = editor.deleted_line = Editor::Text::from_text("k");
  editor.screen_width = 10;
}

std::string shown(Editor& editor) {
  Editor::Text text = editor.current.lines();
  text.insert_text(text.offset_of({editor.cursor_row, editor.cursor_col}), "|");
  if (!editor.current.has_mark()) return text.to_string();
  const zan::Position mark{editor.current.mark_row(), editor.current.mark_col()};
  const bool after = zan::Position{editor.cursor_row, editor.cursor_col} < mark;
  text.insert_text(text.offset_of(mark) + (after ? 1 : 0), "{");
  return text.to_string();
}

// The registers that have changed, and the message.
std::string told(Editor& editor) {
  std::string shown;
  const auto add = [&](const char* name, const Editor::Text& text) {
    if (text != Editor::Text::from_text("k")) shown += name + text.to_string() + ".";
  };
  add("C=", editor.deleted_char);
  add("W=", editor.deleted_word);
  add("L=", editor.deleted_line);
  add("P=", editor.paste_text_content());
  return shown + editor.status_message + (editor.undo_stack.empty() ? "" : "!");
}

Act to(void (Editor::*act)()) { return act; }

Act backward(void (Editor::*act)()) {
  return [=](Editor& editor) {
    editor.direction = Editor::Direction::Backup;
    (editor.*act)();
  };
}

// In the PASTE buffer itself.
Act in_paste(void (Editor::*act)()) {
  return [=](Editor& editor) {
    editor.current_buffer_name = "PASTE";
    (editor.*act)();
  };
}

Act wrapping(int width) {
  return [=](Editor& editor) {
    editor.wrap = true;
    editor.screen_width = width;
    editor.maybe_wrap_line();
  };
}

Act pasting(const std::string& case_mode, const std::string& text) {
  return [=](Editor& editor) {
    editor.wrap = true;
    editor.case_mode = case_mode;
    editor.paste_text(Editor::Text::from_text(text));
  };
}

} // namespace

TEST(EntityEdit, ChangesTextAndCursorAndRegisters) {
  const Act del_c = to(&Editor::delete_char_at_cursor), left = to(&Editor::delete_char_left),
            del_w = to(&Editor::delete_word), left_w = to(&Editor::delete_word_left),
            del_l = to(&Editor::delete_line), select = to(&Editor::start_select),
            cut = to(&Editor::cut_select), append = to(&Editor::append_select),
            replace = to(&Editor::replace_select_with_paste), flip = to(&Editor::change_case_char),
            flip_back = backward(&Editor::change_case_char), tab = to(&Editor::insert_tab_at_cursor),
            narrower = to(&Editor::shift_left_line);
  const Act und_l_of_none = [](Editor& editor) {
    editor.deleted_line = {};
    editor.undelete_line();
  };
  const Act flip_beyond = [&](Editor& editor) {
    editor.cursor_col = 5;
    flip_back(editor);
    editor.clamp_cursor();
  };
  const struct {
    const char* name;
    Act act;
    const char *before, *after, *said;
  } rows[] = {
      {"DEL C", del_c, "a|b", "a|", "C=b."},
      {"DEL C of a line's end", del_c, "a|\nb", "a|b", "C=\n."},
      {"DEL C at the end", del_c, "a|", "a|", ""},
      {"DELETE", left, "ab|", "a|", "C=b."},
      {"DELETE of a line's end", left, "a\n|b", "a|b", "C=\n."},
      {"DELETE at the top", left, "|a", "|a", ""},
      {"DEL W", del_w, "|a b", "| b", "W=a."},
      {"DEL W at a line's end", del_w, "a|\nb", "a|\nb", "W=."},
      {"LINEFEED", left_w, "a b|", "a |", "W=b.Deleted word"},
      {"LINEFEED at the top", left_w, "|a", "|a", "W=.No word"},
      {"DEL L", del_l, "a\nb|c\nd", "a\n|d", "L=bc\n."},
      {"DEL L of the last line", del_l, "a\nb|", "|a", "L=b\n."},
      {"DEL L of the only line", del_l, "a|b", "|", "L=ab\n."},
      {"DEL EOL", to(&Editor::delete_eol), "a|bc\nd", "a|\nd", "P=bc."},
      {"UND C", to(&Editor::undelete_char), "a|b", "ak|b", ""},
      {"UND W", to(&Editor::undelete_word), "a|b", "ak|b", ""},
      {"UND L", to(&Editor::undelete_line), "a|b", "ak|b", ""},
      {"UND L of none", und_l_of_none, "a|b", "a|b", "L=.No deleted line"},
      {"SELECT", select, "a|b", "a{|b", "SELECT"},
      {"SELECT again", select, "{a|b", "{a|b", "Select range is already active"},
      {"CUT", cut, "a{bc|d", "a|d", "P=bc."},
      {"CUT backward", cut, "a|b\nc{d", "a|d", "P=b\nc."},
      {"CUT of nothing", cut, "a|b", "a|b", "No select range active"},
      {"CUT in PASTE, to a shorter line", in_paste(&Editor::cut_select), "abcd{e|", "e|", "P=e."},
      {"CUT in PASTE, to fewer lines", in_paste(&Editor::cut_select), "abc\nd{ef|", "e|f", "P=ef."},
      {"APPEND", append, "a{bc|d", "a|d", "P=kbc."},
      {"REPLACE", replace, "a{bc|d", "ak|d", ""},
      {"REPLACE of nothing", replace, "a|b", "a|b", "No select range active"},
      {"CHNGCASE of a range", flip, "a{B\nc|D", "ab\nC|D", "!"},
      {"CHNGCASE", flip, "a|b1", "aB|1", "!"},
      {"CHNGCASE at a line's end", flip, "a|\nb", "a|\nb", "!"},
      {"CHNGCASE backward", flip_back, "a|b", "|Ab", "!"},
      {"CHNGCASE backward at a line's start", flip_back, "a\n|b", "a\n|b", "!"},
      {"CHNGCASE beyond a line's end", flip_beyond, "|ab\ncd", "ab|\ncd", "!"},
      {"WRAP after a blank", wrapping(10), "aaaa bbbb cc|", "aaaa bbbb \ncc|", ""},
      {"WRAP at the cursor", wrapping(10), "aaaa bbbb |cc", "aaaa bbbb \n|cc", ""},
      {"WRAP in a word", wrapping(10), "aaaaaaaaaaaaa|", "aaaaaaaaaa\naaa|", ""},
      {"WRAP not after a blank at column 0", wrapping(10), " aaaaaaaaaaaa|", " aaaaaaaaa\naaa|", ""},
      {"WRAP leaves a blank too many", wrapping(10), "aaaaaaaaa|a ", "aaaaaaaaa|a ", ""},
      {"WRAP behind a blank too many", wrapping(10), "aaaaaaaaaa |", "aaaaaaaaaa \n|", ""},
      {"WRAP follows the cursor", wrapping(10), "a|a bbbbb cccccccccccccc", "a|a bbbbb \ncccccccccccccc", ""},
      {"WRAP several times", wrapping(8), "aaaaaaa bbbbbbb ccccccccc|", "aaaaaaa \nbbbbbbb \ncccccccc\nc|",
       ""},
      {"WRAP of too few columns", wrapping(7), "aaaaaaaaaaaaa|", "aaaaaaaaaaaaa|", ""},
      {"PASTE wraps", pasting("NONE", "aaaaa bB"), "aaaa|", "aaaaaaaaa \nbB|", ""},
      {"PASTE in capitals", pasting("UPPER", "bC"), "a|", "aBC|", ""},
      {"PASTE in small letters", pasting("LOWER", "bC"), "A|", "Abc|", ""},
      {"TAB", tab, "a|b", "a       |b", "Tab"},
      {"TAB at a stop", tab, "12345678|", "12345678        |", "Tab"},
      {"OPEN LINE", to(&Editor::open_line), "ab|c", "\n|abc", "!"},
      {"GOLD left", narrower, " a|b", "ab|", "!"},
      {"GOLD left without a blank", narrower, "a|b", "a|b", "!"},
      {"GOLD left of an empty line", narrower, "|\n b", "|\n b", "!"},
      {"GOLD right", to(&Editor::shift_right_line), "a|b", " a|b", "!"},
  };
  for (const auto& row : rows) {
    Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
    set_up(editor, row.before);
    row.act(editor);
    EXPECT_LE(editor.cursor_col, editor.current.line_length(editor.cursor_row)) << row.name;
    EXPECT_EQ(shown(editor), row.after) << row.name;
    EXPECT_EQ(told(editor), row.said) << row.name;
  }
}
