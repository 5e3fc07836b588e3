#include "search/pattern.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

using zan::Pattern;

TEST(Pattern, FindsTheFirstMatchOrTheLast) {
  expect_rows("search/pattern", [](const Fields& row) -> std::string {
    const Pattern pattern(row[2], row[1] == "exact");
    const std::size_t column = std::stoul(row[4]);
    const auto found =
        row[0] == "forward" ? pattern.find_forward(row[3], column) : pattern.find_backward(row[3], column);
    if (!found) return "none";
    return std::to_string(*found) + "+" + std::to_string(pattern.match_length(row[3], *found));
  });
  EXPECT_TRUE(zan::has_wildcards(std::string("a\0*", 3)));
}

// These would not end in anybody's lifetime if a star were retried needlessly, or would exhaust the stack.
TEST(Pattern, LongLinesAndLongPatterns) {
  const std::string line(1000000, 'a');
  EXPECT_FALSE(Pattern("a*a*a*a*a*a*a*b", true).find_forward(line, 0));
  EXPECT_FALSE(Pattern("a*a*a*a*a*a*a*b", true).find_backward(line, line.size()));
  std::string stars;
  for (int i = 0; i < 100; ++i) stars += "a*";
  EXPECT_EQ(Pattern(stars, true).match_at(line, 0), std::optional<std::size_t>(100));
  EXPECT_EQ(Pattern(std::string(1000000, '?'), true).find_forward(line, 0), std::optional<std::size_t>(0));
  const Pattern far("a*b", true);
  const std::string ended = line + "b";
  zan::BackwardMatches matches(far, ended);
  for (std::size_t col = line.size(); col-- > 0;) {
    ASSERT_EQ(matches.previous(col), std::optional(col));
    ASSERT_EQ(matches.length_at(col), line.size() + 1 - col);
  }
}

TEST(Pattern, AnAbortEndsTheSearchInALine) {
  constexpr std::sig_atomic_t kAborted = 1;
  for (const char* source : {"[ab]%", "%*b", "b%*%"}) {
    EXPECT_FALSE(Pattern(source, true).find_forward("abb", 0, kAborted)) << source;
    EXPECT_FALSE(Pattern(source, true).find_backward("abb", 3, kAborted)) << source;
  }
  EXPECT_FALSE(Pattern("a*b", true).match_at("abb", 0, kAborted));
}
