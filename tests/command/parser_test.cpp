#include "command/parser.h"

#include <set>

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"
#include "text/bytes.h"

namespace {

zan::KeyForm form_of(std::string_view key) {
  using enum zan::KeyForm;
  if (key == "SHOW-KEY") return either;
  if (key == "SET-TAB" || key == "SET-ENTITY") return argument;
  return key == "SET-NUMBERS" || key == "SET-MODE-LINE" ? alone : unspelled;
}

std::string parsed(std::string_view line) {
  const zan::ParsedCommand command = zan::parse_command(line, {50, 9}, form_of);
  return command.key + "|" + command.arg;
}

} // namespace

TEST(Parser, EveryTableRowIsFoundInAnyCase) {
  std::set<std::string_view> seen;
  for (const zan::ExactForm& row : zan::exact_forms()) {
    EXPECT_EQ(parsed(zan::lower(row.line)), std::string(row.key) + "|" + std::string(row.arg));
    EXPECT_TRUE(seen.insert(row.line).second) << row.line;
  }
  for (const zan::PrefixForm& row : zan::prefix_forms())
    EXPECT_EQ(parsed(zan::lower(row.prefix) + " x y "), std::string(row.key) + "|x y") << row.prefix;
}

TEST(Parser, LinesThatNeedCare) {
  expect_rows("command/parser", [](const Fields& row) { return parsed(row[0]); });
}
