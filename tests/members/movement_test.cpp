#include "app/editor.h"

#include <functional>
#include <gtest/gtest.h>

// Moves over forty lines, four kinds of them in turn.
namespace {

constexpr auto kAdvance = Editor::Direction::Advance;
constexpr auto kBackup = Editor::Direction::Backup;

using Place = std::pair<std::uint64_t, std::uint64_t>; // row, column
using Move = std::function<void(Editor&)>;

Move move_by(void (Editor::*move)()) { return move; }
Move move_by(void (Editor::*move)(Editor::Direction), Editor::Direction way) {
  return [=](Editor& editor) { (editor.*move)(way); };
}

} // namespace

TEST(Movement, OverFortyLines) {
  std::string text;
  for (int i = 0; i < 10; ++i) text += "foo, bar_$1;x\n\n..a b\nlast.\n";
  const Move left = move_by(&Editor::move_left), right = move_by(&Editor::move_right),
             up = move_by(&Editor::move_up), down = move_by(&Editor::move_down),
             word = move_by(&Editor::move_word, kAdvance), word_back = move_by(&Editor::move_word, kBackup),
             line = move_by(&Editor::line_move, kAdvance), line_back = move_by(&Editor::line_move, kBackup),
             page = move_by(&Editor::page_down), page_back = move_by(&Editor::page_up),
             section = move_by(&Editor::section_move, kAdvance),
             section_back = move_by(&Editor::section_move, kBackup);
  const struct {
    const char* name;
    Move move;
    std::vector<Place> places; // one after the other
  } rows[] = {
      {"left", left, {{2, 1}, {2, 0}, {1, 0}, {0, 13}, {0, 12}}},
      {"left at the top", left, {{0, 1}, {0, 0}, {0, 0}}},
      {"right", right, {{0, 12}, {0, 13}, {1, 0}, {2, 0}, {2, 1}}},
      {"right at the end", right, {{39, 4}, {39, 5}, {39, 5}}},
      {"character forward", move_by(&Editor::move_char, kAdvance), {{0, 13}, {1, 0}}},
      {"character backward", move_by(&Editor::move_char, kBackup), {{1, 0}, {0, 13}}},
      {"up", up, {{4, 9}, {3, 5}, {2, 5}, {1, 0}, {0, 0}, {0, 0}}},
      {"down", down, {{36, 9}, {37, 0}, {38, 0}, {39, 0}, {39, 0}}},
      {"up from the top", up, {{0, 20}, {0, 13}}},
      {"down to a shorter line", down, {{2, 5}, {3, 5}, {4, 5}, {5, 0}}},
      {"word", word, {{0, 0}, {0, 5}, {0, 12}, {1, 0}, {2, 0}, {2, 2}, {2, 4}, {3, 0}, {4, 0}, {4, 5}}},
      {"word from its middle", word, {{0, 1}, {0, 5}}},
      {"word from a delimiter", word, {{0, 4}, {0, 5}}},
      {"word at the end", word, {{39, 0}, {39, 5}, {39, 5}}},
      {"word beyond the line", word, {{0, 20}, {1, 0}}},
      {"word back",
       word_back,
       {{4, 5}, {4, 0}, {3, 0}, {2, 4}, {2, 2}, {2, 0}, {1, 0}, {0, 12}, {0, 5}, {0, 0}, {0, 0}}},
      {"word back from its middle", word_back, {{0, 7}, {0, 5}}},
      {"word back from beyond the line", word_back, {{0, 20}, {0, 12}}},
      {"line", line, {{1, 0}, {2, 0}, {3, 0}}},
      {"line at the end", line, {{38, 3}, {39, 0}, {39, 0}}},
      {"line on the last one", line, {{39, 3}, {39, 0}}},
      {"line back", line_back, {{2, 3}, {2, 0}, {1, 0}, {0, 0}, {0, 0}}},
      {"page", page, {{0, 7}, {21, 7}, {39, 7}, {39, 7}}},
      {"page back", page_back, {{39, 3}, {18, 3}, {0, 3}}},
      {"page back to the top", page_back, {{22, 0}, {1, 0}}},
      {"page back just to it", page_back, {{21, 0}, {0, 0}}},
      {"section", section, {{0, 7}, {16, 7}, {32, 7}, {39, 5}}},
      {"section back", section_back, {{33, 0}, {17, 0}, {1, 0}, {0, 0}}},
      {"section back from row 32", section_back, {{32, 9}, {16, 9}, {0, 9}}},
      {"section back to an empty line", section_back, {{37, 1}, {21, 0}, {5, 0}}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
    editor.current.set_text(text);
    ASSERT_EQ(editor.current.line_count(), 40u);
    editor.current.clear_modified();
    editor.current.set_mark(3, 2);
    std::tie(editor.cursor_row, editor.cursor_col) = row.places.front();
    for (std::size_t i = 1; i < row.places.size(); ++i) {
      row.move(editor);
      EXPECT_EQ(std::pair(editor.cursor_row, editor.cursor_col), row.places[i]) << i;
    }
    const bool by_lines = std::string_view(row.name).find("line") == 0;
    EXPECT_EQ(editor.status_message, by_lines ? "LINE" : "");
    EXPECT_FALSE(editor.current.modified());
    EXPECT_EQ(std::pair(editor.current.mark_row(), editor.current.mark_col()), Place(3, 2));
  }
}

TEST(Movement, DelimitersMayBeWhiteSpaceOnly) {
  Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
  EXPECT_TRUE(editor.is_delim(',') && editor.is_delim('\t') && editor.is_delim('~'));
  EXPECT_FALSE(editor.is_delim('$') || editor.is_delim('_') || editor.is_delim('a') || editor.is_delim('\v'));
  editor.word_delimiters_on = false;
  for (const char c : std::string_view(" \t\n\v\f\r")) EXPECT_TRUE(editor.is_delim(c));
  editor.current.set_text("foo,bar\tbaz");
  editor.move_word(kAdvance);
  EXPECT_EQ(editor.cursor_col, 8u);
}
