#include "command/line_range.h"

#include <gtest/gtest.h>

namespace {

using zan::LineContext;
using zan::LineRange;

constexpr std::nullopt_t invalid = std::nullopt;
constexpr LineContext kFifty{.line_count = 50, .cursor_row = 9};

struct RangeCase {
  std::string_view text;
  std::optional<LineRange> range;
};

constexpr LineRange one(std::uint64_t row) { return {row, row}; }

TEST(LineRange, FiftyLinesWithTheCursorOnTheTenth) {
  const RangeCase cases[] = {
      {"12", one(11)},
      {"99", one(49)},
      {"0", invalid},
      {"+5", invalid},
      {"18446744073709551616", invalid},
      {"5x", invalid},
      {".", one(9)},
      {"Current", one(9)},
      {"CURR", invalid},
      {"BEGIN", one(0)},
      {"end", one(49)},
      // relative
      {".+3", one(12)},
      {". - 3", one(6)},
      {".-20", one(0)},
      {".+100", one(49)},
      {".+18446744073709551615", one(49)},
      {".+99999999999999999999", invalid},
      {".+", invalid},
      {".+3x", invalid},
      {".++3", invalid},
      // two references, in any order
      {"10 THRU 20", {{9, 19}}},
      {"20 thru 10", {{9, 19}}},
      {"10THRU20", invalid},
      {"1 THRU 2 THRU 3", invalid},
      {"1:END", {{0, 49}}},
      {"1:5", {{0, 4}}},
      {":5", invalid},
      {"1:2:3", invalid},
      {".-2:.+2", {{7, 11}}},
      {"0:5", invalid},
      {"3-7", {{2, 6}}},
      {"-3", invalid},
      {"7-", invalid},
      {"END-.-3", {{6, 49}}},
      {".+1-20", {{10, 19}}},
      {".-3-5", invalid},
      // words, qualifiers
      {"WHOLE", {{0, 49}}},
      {"rest", {{9, 49}}},
      {"REST:5", invalid},
      {"1:5/BRIEF", {{0, 4}}},
      {"/BRIEF", invalid},
      {"1 /x/ 2", one(0)},
  };
  for (const RangeCase& c : cases) EXPECT_EQ(zan::parse_line_range(c.text, kFifty), c.range) << c.text;
}

TEST(LineRange, CursorBelowTheTextAndNoText) {
  const LineContext below{.line_count = 3, .cursor_row = 7};
  EXPECT_EQ(zan::parse_line_range(".", below), one(2));
  EXPECT_EQ(zan::parse_line_range(".-1", below), one(1));
  EXPECT_EQ(zan::parse_line_range("REST", below), (LineRange{7, 2}));
  for (const char* text : {"1", ".", "END", "WHOLE", "REST", ".+1"}) {
    EXPECT_EQ(zan::parse_line_range(text, {.line_count = 0}), invalid) << text;
    EXPECT_EQ(zan::parse_line_ref(text, {.line_count = 0}), invalid) << text;
  }
}

TEST(LineRange, NumbersOnlyOutsideTheCurrentBuffer) {
  const RangeCase cases[] = {
      {"2:4", {{1, 3}}},  {"4 thru 2", {{1, 3}}}, {"2", one(1)},       {"9", one(4)},
      {"3:99", {{2, 4}}}, {"whole", {{0, 4}}},    {"ALL/X", {{0, 4}}}, {"0", invalid},
      {"0:3", invalid},   {"2-4", invalid},       {".", invalid},      {"END", invalid},
      {"REST", invalid},  {"", invalid},          {"2:", invalid},     {"18446744073709551616", invalid},
  };
  for (const RangeCase& c : cases) EXPECT_EQ(zan::parse_number_range(c.text, 5), c.range) << c.text;
  EXPECT_EQ(zan::parse_number_range("1", 0), invalid);
  EXPECT_EQ(zan::parse_number_range("ALL", 0), invalid);
}

} // namespace
