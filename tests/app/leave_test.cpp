#include "app/editor.h"

#include <gtest/gtest.h>

namespace {

TEST(Leave, TheRowSaysWhereTheTextsOfAFailedSaveAre) {
  Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
  const Editor::RowReports reports(editor, true);
  editor.unsaved_copy = ".a.zan-x";
  editor.kept_copy = "a.save";
  const std::string error = "?Unable to save a";
  editor.report_failed_save(error, false);
  EXPECT_EQ(editor.row_error, error + "; new text in .a.zan-x; another program's text in a.save");
  editor.report_failed_save(error, false); // that of another one
  EXPECT_EQ(editor.row_error, error);
}

} // namespace
