#include "command/parser.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "command/spellings.h"
#include "text/bytes.h"

namespace {

constexpr zan::LineContext kContext{50, 9};

std::string parsed(std::string_view line) {
  const zan::ParsedCommand command = zan::parse_command(line, kContext);
  return command.key + "|" + command.arg;
}

} // namespace

TEST(Parser, EverySpellingIsFoundInAnyCase) {
  std::set<std::string> seen;
  for (const std::string_view line : zan::regular_forms()) {
    std::string key(line);
    std::ranges::replace(key, ' ', '-');
    EXPECT_EQ(parsed(zan::lower(line)), key + "|");
    EXPECT_TRUE(seen.emplace(line).second) << line;
  }
  for (const zan::ExactForm& row : zan::other_forms()) {
    EXPECT_EQ(parsed(zan::lower(row.line)), std::string(row.key) + "|" + std::string(row.arg));
    EXPECT_TRUE(seen.emplace(row.line).second) << row.line;
  }
  for (const zan::PrefixForm& row : zan::prefix_forms())
    EXPECT_EQ(parsed(zan::lower(row.prefix) + " x y "), std::string(row.key) + "|x y") << row.prefix;
  EXPECT_EQ(zan::prefix_forms().size(), 52u);
}

TEST(Parser, LinesThatNeedCare) {
  struct Row {
    std::string_view line;
    std::string_view expected; // key|argument
  };
  const Row rows[] = {
      {"  ", "|"},
      {"7", "GOTO-LINE|7"},
      {"0", "GOTO-LINE|0"},
      {"99999999999999999999999", "GOTO-LINE|99999999999999999999999"},
      {".+1", "GOTO-LINE|11"},
      {".", ".|"},
      {".+x", ".+X|"},
      {"5 TYPE", "5|TYPE"},
      {"t 10 thru 20", "TYPE|10 thru 20"},
      {"TYPE5", "TYPE5|"},
      {"TYPE\t5", "TYPE|5"},
      {"FIND", "FIND|"},
      {"f  Abc ", "FIND|Abc"},
      {"FIND NEXT", "FNDNXT|"},
      {"FIND  NEXT", "FIND|NEXT"},
      {"SET  NUMBERS", "SET|NUMBERS"},
      {"SHOW KEY gold kp7", "SHOW-KEY|gold kp7"},
      {"SUBSTITUTE/a/b/3", "SUBSTITUTE|/a/b/3"},
      {"SUBSTITUTE all", "SUBSTITUTE-ALL|"},
      {"SUBSTITUTE ALL x", "SUBSTITUTE-ALL|x"},
      {"SUBSTITUTE ALLSO", "SUBSTITUTE|ALLSO"},
      {"SUBSTITUTE _x", "SUBSTITUTE|_x"},
      {"SUBSTITUTE NEXT", "SUBSTITUTE|"},
      {"XLATEab", "XLATE|ab"},
      {"TAB ADJUST1:2", "TAB-ADJUST|1:2"},
      {"SET TAB", "SET-TAB|8"},
      {"SET WORD DELIMITERS", "SET-WORD-DELIM|ON"},
      {"SET WORD abc", "SET-ENTITY|abc"},
      {"DELETE LINE", "DEL-L|"},
      {"HELP  KEYPAD", "HELP|KEYPAD"},
  };
  for (const Row& row : rows) EXPECT_EQ(parsed(row.line), row.expected) << row.line;
}
