#include "app/editor.h"

#include <gtest/gtest.h>

TEST(NamedBuffers, AreFoundByTheirNormalName) {
  Editor editor({"file"}, std::nullopt, std::nullopt, false, false, std::nullopt);
  for (const char* name : {"", " ", "=", "main", "=\" Main\" "})
    EXPECT_EQ(&editor.named_buffer(name), &editor.named_buffer("MAIN")) << name;
  EXPECT_EQ(editor.named_buffer("main").filename(), "file");
  EXPECT_EQ(editor.named_buffer("other").filename(), "");

  editor.current.set_text("abc\nabc");
  editor.cursor_row = editor.cursor_col = editor.top_row = 1;
  editor.find_buffer("=", false);
  EXPECT_EQ(editor.status_message, "");
  editor.find_buffer("\"Other\"", false);
  EXPECT_EQ(editor.status_message, "Buffer OTHER");
  EXPECT_EQ(editor.cursor_row + editor.cursor_col + editor.top_row, 0u);
  editor.named_buffer("MAIN").set_mark(1, 1);
  editor.find_buffer("=main", false);
  EXPECT_EQ(editor.current.text().to_string(), "abc\nabc");
  EXPECT_FALSE(editor.select_active());
}

TEST(NamedBuffers, PasteIsShownAtOnceWhereItIsCurrent) {
  Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
  editor.append_paste_text({});
  EXPECT_FALSE(editor.named_buffer("PASTE").modified());
  editor.find_buffer("paste", false);
  editor.set_paste_text(Editor::Text::from_text("a\nb"));
  EXPECT_EQ(editor.current.text().to_string(), "a\nb");
  editor.current.insert_char(1, 1, 'c');
  EXPECT_EQ(editor.paste_text_content().to_string(), "a\nbc");
  editor.append_paste_text(Editor::Text::from_text("d\n"));
  editor.append_paste_text(Editor::Text::from_text("e"));
  EXPECT_EQ(editor.current.text().to_string(), "a\nbcd\ne");
}

TEST(NamedBuffers, TheCurrentOneIsLiveInItsWorkingCopy) {
  Editor editor({"file"}, std::nullopt, std::nullopt, false, false, std::nullopt);
  editor.named_buffer("MAIN");
  editor.current.set_text("new");
  EXPECT_EQ(&editor.live_buffer("=main"), &editor.current);
  EXPECT_EQ(editor.find_live_buffer("MAIN"), &editor.current);
  EXPECT_EQ(editor.current.filename(), "file");
  EXPECT_EQ(&editor.live_buffer("other"), &editor.named_buffer("OTHER"));
  EXPECT_EQ(editor.find_live_buffer("NONE"), nullptr);
}
