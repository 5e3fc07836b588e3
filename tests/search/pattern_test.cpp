#include "search/pattern.h"

#include <gtest/gtest.h>

using zan::Pattern;

namespace {

constexpr std::int64_t kNone = -1;

std::int64_t column(const std::optional<std::size_t>& found) {
  return found ? static_cast<std::int64_t>(*found) : kNone;
}

} // namespace

TEST(Pattern, FindsFirstMatchAndItsLength) {
  struct Row {
    const char* pattern;
    const char* line;
    bool exact;
    std::size_t from;
    std::int64_t col;
    std::size_t length;
  };
  const Row rows[] = {
      {"ABC", "xabc", false, 0, 1, 3},
      {"ABC", "xaBc", true, 0, kNone, 0},
      {"a*c", "abcbc", true, 0, 0, 3},
      {"*$", "abc", true, 1, 1, 2},
      {"what?", "what", true, 0, kNone, 0},
      {"what\\?", "what?", true, 0, kNone, 0},
      {"what\\?", "what\\?", true, 0, 0, 6},
      {"%hat\\?", "what?", true, 0, 0, 5},
      {"$", "abc", true, 0, 3, 0},
      {"x$y", "ax$y", true, 0, 1, 3},
      {"%x$y", "ax$y", true, 0, 0, 4},
      {"^abc", "abcabc", true, 1, kNone, 0},
      {"^", "abc", true, 0, 0, 0},
      {"^^a", "^a", true, 0, 0, 2},
      {"a\\*", "xa\\*", true, 0, 1, 3},
      {"%\\*", "ab*", true, 0, 1, 2},
      {"[]x", "]x", true, 0, kNone, 0},
      {"[^]", "z", true, 0, 0, 1},
      {"[a-]", "-", true, 0, 0, 1},
      {"%\\", "ab", true, 0, kNone, 0},
      {"a\\", "xa\\", true, 0, 1, 2},
      {"a*b$", "ab ab", true, 0, 0, 5},
      {"[\x80-\xff]", "a\xe9", true, 0, 1, 1},
      {"a", "a", true, 2, kNone, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " on " + row.line);
    const Pattern pattern(row.pattern, row.exact);
    const auto found = pattern.find_forward(row.line, row.from);
    EXPECT_EQ(column(found), row.col);
    EXPECT_EQ(found ? pattern.match_length(row.line, *found) : 0, row.length);
  }
  const std::string nul("a\0*", 3);
  EXPECT_TRUE(zan::has_wildcards(nul));
  EXPECT_EQ(Pattern(nul, true).match_length("xa", 1), 1u) << "read up to the NUL";
}

TEST(Pattern, FindsLastMatchBeforeALimit) {
  struct Row {
    const char* pattern;
    const char* line;
    std::size_t limit;
    std::int64_t col;
  };
  const Row rows[] = {
      {"ab", "abab", 4, 2}, {"ab", "abab", 3, 0},  {"ab", "abab", 1, kNone}, {"a%", "abab", 2, 2},
      {"a%", "abab", 1, 0}, {"a*b", "aab", 1, 1},  {"$", "abc", 3, 3},       {"$", "abc", 2, kNone},
      {"^a", "aa", 2, 0},   {"b*b", "abab", 4, 1},
  };
  for (const Row& row : rows)
    EXPECT_EQ(column(Pattern(row.pattern, true).find_backward(row.line, row.limit)), row.col)
        << row.pattern << " on " << row.line << " before " << row.limit;
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
