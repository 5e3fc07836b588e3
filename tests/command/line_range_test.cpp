#include "command/line_range.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

TEST(LineRange, NamesLines) {
  expect_rows("command/line_range", [](const Fields& row) -> std::string {
    const std::uint64_t count = std::stoull(row[0]);
    const bool current = row[1] != "none";
    const auto range = current ? zan::parse_line_range(row[2], {count, std::stoull(row[1]) - 1})
                               : zan::parse_number_range(row[2], count);
    return range ? std::to_string(range->first + 1) + "-" + std::to_string(range->last + 1) : "invalid";
  });
  EXPECT_EQ(zan::parse_line_ref(".", {0, 0}), std::nullopt);
}
