#include <gtest/gtest.h>

#include "app/editor.h"

TEST(KeyForms, FollowFromTheTables) {
  using enum zan::KeyForm;
  struct Row {
    std::string_view key;
    zan::KeyForm form;
  };
  const Row rows[] = {
      {"DEL-L", alone},
      {"SHOW-KEY", either},
      {"DEFINE-KEY", argument},
      {"GOTO-LINE", unspelled},
      {"SET-WRAP", alone},
      {"SET-NOWRAP", alone},
      {"SHOW-WRAP", alone},
      {"SHOW-NOWRAP", unspelled},
      {"SET-LINES", argument},
      {"SET-NOLINES", unspelled},
      {"SHOW-LINES", alone},
      {"SET-CASE", argument},
      {"SHOW-CASE", alone},
      {"SET-RMS", argument},
      {"SHOW-RMS", alone},
      {"SET-SEARCH", argument},
      {"SET-SEARCH-END", alone},
      {"SHOW-SEARCH-END", unspelled},
      {"SET-SEARCH-", unspelled},
      {"SET-", unspelled},
      {"SET", unspelled},
      {"WRAP", unspelled},
      {"", unspelled},
  };
  for (const Row& row : rows) EXPECT_EQ(Editor::key_form(row.key), row.form) << row.key;
}
