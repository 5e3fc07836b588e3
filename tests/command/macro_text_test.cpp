#include "command/macro_text.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

TEST(MacroText, SplitsOutsideQuotes) {
  expect_rows("command/macro_text", [](const Fields& row) {
    std::string commands;
    for (const std::string& command : zan::split_macro_commands(row[0])) commands += "<" + command + ">";
    return commands;
  });
}
