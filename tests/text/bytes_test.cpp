#include "text/bytes.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

namespace {

template <typename Number> std::string told(const std::optional<Number>& number) {
  return number ? std::to_string(*number) : "none";
}

} // namespace

TEST(Bytes, AreReadAndChanged) {
  expect_rows("text/bytes", [](const Fields& row) {
    const std::string& text = row[1];
    if (row[0] == "trim") return std::string(zan::trim(text));
    if (row[0] == "upper") return zan::upper(text);
    if (row[0] == "lower") return zan::lower(text);
    if (row[0] == "quotes off") return std::string(zan::strip_optional_quotes(text));
    return row[0] == "digits" ? told(zan::parse_digits(text)) : told(zan::parse_int_prefix(text));
  });
  EXPECT_TRUE(zan::starts_with_ci("Type 5", "tYPE "));
  EXPECT_TRUE(zan::starts_with_ci("", ""));
  EXPECT_FALSE(zan::starts_with_ci("TYP", "TYPE"));
}
