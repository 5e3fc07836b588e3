#include "text/bytes.h"

#include <gtest/gtest.h>

namespace {

using zan::parse_digits;
using zan::parse_int_prefix;
using namespace std::string_view_literals;

TEST(Bytes, TrimTakesWhiteSpaceOnly) {
  EXPECT_EQ(zan::trim(" \t\r\n\v\fa b \n"), "a b");
  EXPECT_EQ(zan::trim(" \t "), "");
  EXPECT_EQ(zan::trim("\0 a\0"sv), "\0 a\0"sv);
  EXPECT_EQ(zan::trim(" \x85\xa0\xff "), "\x85\xa0\xff"); // white space in other locales
}

TEST(Bytes, CaseChangesAsciiLettersOnly) {
  EXPECT_EQ(zan::upper("aZ9\0\xe9[`{"sv), "AZ9\0\xe9[`{"sv);
  EXPECT_EQ(zan::lower("aZ9\0\xc9[`{"sv), "az9\0\xc9[`{"sv);
  EXPECT_TRUE(zan::starts_with_ci("Type 5", "tYPE "));
  EXPECT_TRUE(zan::starts_with_ci("", ""));
  EXPECT_FALSE(zan::starts_with_ci("TYP", "TYPE"));
}

TEST(Bytes, OnePairOfQuotesComesOff) {
  EXPECT_EQ(zan::strip_optional_quotes(R"("a b")"), "a b");
  EXPECT_EQ(zan::strip_optional_quotes(R"(""a"")"), R"("a")");
  for (const char* kept : {"\"", "\"a", "a\"", " \"a\"", ""})
    EXPECT_EQ(zan::strip_optional_quotes(kept), kept);
  EXPECT_EQ(zan::strip_optional_quotes("\"\""), "");
}

TEST(Bytes, DigitsAreReadWhole) {
  EXPECT_EQ(parse_digits("007"), 7u);
  EXPECT_EQ(parse_digits("18446744073709551615"), UINT64_MAX);
  EXPECT_EQ(parse_digits("00000000000000000000000000001"), 1u);
  for (const auto bad : {""sv, "+4"sv, "-3"sv, " 4"sv, "4 "sv, "4x"sv, "4\0"sv, "18446744073709551616"sv,
                         "99999999999999999999"sv, "184467440737095516150"sv})
    EXPECT_FALSE(parse_digits(bad)) << bad;
}

TEST(Bytes, IntegersAreReadAsFarAsTheyGo) {
  EXPECT_EQ(parse_int_prefix("+4"), 4);
  EXPECT_EQ(parse_int_prefix(" \t4"), 4);
  EXPECT_EQ(parse_int_prefix("4x5"), 4);
  EXPECT_EQ(parse_int_prefix("-3"), -3);
  EXPECT_EQ(parse_int_prefix("2147483647"), INT32_MAX);
  EXPECT_EQ(parse_int_prefix("-2147483648"), INT32_MIN);
  for (const auto bad :
       {"", "+", "-", "x4", "+-4", "- 4", "2147483648", "-2147483649", "99999999999999999999999"})
    EXPECT_FALSE(parse_int_prefix(bad)) << bad;
}

} // namespace
