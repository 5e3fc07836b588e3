#include <gtest/gtest.h>

#include "app/editor.h"
#include "tests/sessions/text_forms.h"

TEST(KeyForms, FollowFromTheTables) {
  expect_rows("members/key_forms", [](const Fields& row) {
    using enum zan::KeyForm;
    const zan::KeyForm form = Editor::key_form(row[0]);
    return form == alone ? "alone" : form == either ? "either" : form == argument ? "argument" : "unspelled";
  });
}
