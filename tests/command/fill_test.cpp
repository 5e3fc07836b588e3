#include "command/fill.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

struct Row {
  std::string_view text;
  std::uint64_t width;
  std::string_view filled;
};

TEST(Fill, Words) {
  const Row rows[] = {
      {""sv, 20, ""sv},
      {" \t\n\n \v\f\r"sv, 20, ""sv},
      {"the quick brown\nfox jumps over the lazy dog"sv, 20,
       "the quick brown fox\njumps over the lazy\ndog"sv},
      {"one\n\n  two\n\tthree \n"sv, 20, "one two three"sv},
      {"aaaa bbbb"sv, 9, "aaaa bbbb"sv}, // just fits
      {"aaaa bbbb"sv, 8, "aaaa\nbbbb"sv},
      {"a 012345678901234567890123456789 b c"sv, 20, "a\n012345678901234567890123456789\nb c"sv},
      {"a b c"sv, 1, "a\nb\nc"sv},
      {"a\rb\vc\fd"sv, 79, "a b c d"sv},
      {"a\0b \xa0\xff c"sv, 79, "a\0b \xa0\xff c"sv}, // neither NUL nor bytes above 127 are white space
  };
  for (const Row& row : rows)
    EXPECT_EQ(zan::fill_words(zan::LineStore::from_text(row.text), row.width).to_string(), row.filled)
        << row.text << " in " << row.width;
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

TEST(Fill, Span) {
  const Row rows[] = {
      {""sv, 8, ""sv},
      {"aa  bb  cc"sv, 79, "aa  bb  cc"sv},
      {"aa\nbb\n\ncc"sv, 79, "aa bb  cc"sv},
      {"aa bb\n"sv, 79, "aa bb \n"sv}, // the line feed is a blank of the text, and stays
      {"\n"sv, 79, " \n"sv},
      {"aaaa bbbb"sv, 8, "aaaa\nbbbb"sv},
      {"aaaa bbbb"sv, 9, "aaaa bbbb"sv},
      {"aaaaaaaa "sv, 8, "aaaaaaaa\n"sv}, // a blank that is itself too much
      {"aaaaaaaa  b"sv, 8, "aaaaaaaa\n b"sv},
      {"aa bb cc dd ee"sv, 5, "aa bb\ncc dd\nee"sv},
      {"a 0123456789 b"sv, 4, "a\n0123456789\nb"sv}, // a longer word stays whole
      {"0123456789"sv, 4, "0123456789"sv},
      {"a\tb\tc d"sv, 3, "a\tb\tc\nd"sv}, // only at blanks
      {"     x"sv, 2, "  \n \nx"sv},      // blanks count like any byte
  };
  for (const Row& row : rows)
    EXPECT_EQ(zan::fill_span(std::string(row.text), row.width), row.filled)
        << row.text << " in " << row.width;
}

} // namespace
