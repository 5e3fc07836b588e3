#include "command/parser.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

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
      {"set numbers", "SET-NUMBERS|"},
      {"SET  NUMBERS", "SET|NUMBERS"},
      {"SET\tNUMBERS", "SET|NUMBERS"},
      {"SET NUMBERS 1", "SET|NUMBERS 1"},
      {"SET-NUMBERS 1", "SET-NUMBERS|1"},
      {"set mode line", "SET-MODE-LINE|"},
      {"SET-MODE LINE", "SET-MODE|LINE"},
      {"SET TAB -4", "SET-TAB|-4"},
      {"SET TAB\t4", "SET|TAB\t4"},
      {"SHOW KEY", "SHOW-KEY|"},
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
      {"SET ENTITY abc", "SET-ENTITY|abc"},
      {"SET ENTITY WORD abc", "SET-ENTITY|abc"},
      {"SET WORD abc", "SET-ENTITY|abc"},
      {"DELETE LINE", "DEL-L|"},
      {"HELP  KEYPAD", "HELP|KEYPAD"},
  };
  for (const Row& row : rows) EXPECT_EQ(parsed(row.line), row.expected) << row.line;
}
