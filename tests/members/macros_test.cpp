#include "app/editor.h"

#include <string>

#include <gtest/gtest.h>

#include "host/stack.h"

namespace {

std::string macro_name(int level) { return "LEVEL" + std::to_string(level); }

// Macros of which each calls the next, the last one types over the text.
void define_chain(Editor& editor, int count) {
  for (int level = 1; level <= count; ++level) {
    const std::string command = level < count ? macro_name(level + 1) : "INSERT x";
    editor.named_buffer(macro_name(level)).set_text(command + "\n" + (level == 1 ? "INSERT y" : "! back"));
    editor.macros[macro_name(level)] = true;
  }
}

TEST(Macros, NestAsDeepAsTheLimitAndNoDeeper) {
  zan::raise_stack_limit();
  const int limit = zan::nesting_limit();
  EXPECT_GE(limit, 10000);
  for (const int depth : {limit, limit + 1}) {
    Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
    define_chain(editor, depth);
    EXPECT_TRUE(editor.try_execute_macro("=level1", false));
    EXPECT_EQ(editor.current.text().to_string(), depth == limit ? "xy\n" : "y\n");
    EXPECT_TRUE(editor.macro_stack.empty());
    EXPECT_EQ(editor.nesting_depth, 0);
  }
}

} // namespace
