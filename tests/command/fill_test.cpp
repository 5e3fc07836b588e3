#include "command/fill.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

TEST(Fill, BreaksLinesAtBlanks) {
  expect_rows("command/fill", [](const Fields& row) {
    const std::uint64_t width = std::stoull(row[2]);
    if (row[0] == "span") return zan::fill_span(row[1], width);
    return zan::fill_words(zan::LineStore::from_text(row[1]), width).to_string();
  });
  const zan::LineStore inside = zan::LineStore::from_line("a\nb  c");
  EXPECT_EQ(zan::fill_words(inside, 79), zan::LineStore::from_text("a b c"));
}

TEST(Fill, WordsThatLieAcrossPieces) {
  zan::LineStore text = zan::LineStore::from_text("alpha gamma\ndelta");
  text.insert_text(3, "XX");
  text.insert_text(8, "beta");
  EXPECT_EQ(text.to_string(), "alpXXha betagamma\ndelta");
  EXPECT_EQ(zan::fill_words(text, 9).to_string(), "alpXXha\nbetagamma\ndelta");
}
