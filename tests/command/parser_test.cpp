#include "command/parser.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "command/help_text.h"
#include "command/macro_text.h"
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
      {"007", "GOTO-LINE|7"},
      {"0", "GOTO-LINE|0"},
      {"99999999999999999999999", "GOTO-LINE|99999999999999999999999"},
      {".+1", "GOTO-LINE|11"},
      {".-99", "GOTO-LINE|1"},
      {".", ".|"},
      {".+x", ".+X|"},
      {"5 TYPE", "5|TYPE"},
      {"t 10 thru 20", "TYPE|10 thru 20"},
      {"TYPE5", "TYPE5|"},
      {"TYPE\t5", "TYPE|5"},
      {"F", "F|"},
      {"FIND", "FIND|"},
      {"f  Abc ", "FIND|Abc"},
      {"FIND NEXT", "FNDNXT|"},
      {"FIND  NEXT", "FIND|NEXT"},
      {"SET  NUMBERS", "SET|NUMBERS"},
      {"SHOW KEY gold kp7", "SHOW-KEY|gold kp7"},
      {"SUBS/a/b/", "SUBSTITUTE|/a/b/"},
      {"SUBSTITUTE/a/b/3", "SUBSTITUTE|/a/b/3"},
      {"SUBSTITUTE all", "SUBSTITUTE-ALL|"},
      {"SUBSTITUTE ALL x", "SUBSTITUTE-ALL|x"},
      {"SUBSTITUTE ALLSO", "SUBSTITUTE|ALLSO"},
      {"SUBSTITUTE _x", "SUBSTITUTE|_x"},
      {"SUBSTITUTE NEXT", "SUBSTITUTE|"},
      {"XLATEab", "XLATE|ab"},
      {"TAB ADJUST1:2", "TAB-ADJUST|1:2"},
      {"SET TAB", "SET-TAB|8"},
      {"SET TAB 4", "SET-TAB|4"},
      {"SET WORD DELIMITERS", "SET-WORD-DELIM|ON"},
      {"SET WORD abc", "SET-ENTITY|abc"},
      {"SET ENTITY WORD x", "SET-ENTITY|x"},
      {"SET SEARCH FUZZY", "SET-SEARCH|FUZZY"},
      {"DELETE LINE", "DEL-L|"},
      {"DELETE 3", "DELETE|3"},
      {"set-numbers", "SET-NUMBERS|"},
      {"HELP  KEYPAD", "HELP|KEYPAD"},
  };
  for (const Row& row : rows) EXPECT_EQ(parsed(row.line), row.expected) << row.line;
}

TEST(Qualifiers, AreTakenOutWhereverTheyStand) {
  struct Row {
    std::string_view line;
    std::string_view rest;
    zan::Qualifiers expected;
  };
  const Row rows[] = {
      {"TYPE/BRIEF:5 1:3", "TYPE 1:3", {.brief = true, .brief_width = 5}},
      {"TYPE /brief:0 1", "TYPE  1", {.brief = true, .brief_width = 1}},
      {"TYPE/BRIEF:", "TYPE", {.brief = true}},
      {"TYPE/BRIEF:99999999999", "TYPE", {.brief = true}},
      {"/SAVE", "", {.save = true}},
      {"RESEQUENCE/SEQUENCE=10:5", "RESEQUENCE", {.sequence = true, .seq_start = 10, .seq_step = 5}},
      {"X /SEQUENCE=10/DUPLICATE", "X", {.duplicate = true, .sequence = true, .seq_start = 10}},
      {"X /SEQUENCE=:5", "X", {.sequence = true}},
      {"X/G/GLOBAL/GO", "X/GO", {.global = true}},
      {"FIND \"a/SAVE\"", "FIND \"a\"", {.save = true}},
      {"SUBSTITUTE/save/keep/", "SUBSTITUTE/keep/", {.save = true}},
      {"SUBSTITUTE/saved/kept/", "SUBSTITUTE/saved/kept/", {}},
      {"a /QUERY /STAY/NOTYPE b", "a   b", {.query = true, .notype = true, .stay = true}},
  };
  for (const Row& row : rows) {
    std::string line(row.line);
    EXPECT_EQ(zan::extract_qualifiers(line), row.expected) << row.line;
    EXPECT_EQ(line, row.rest);
  }
}

TEST(LineRange, ReferencesAndRanges) {
  struct Row {
    std::string_view text;
    std::optional<zan::LineRange> expected;
  };
  const Row rows[] = {
      {"12", {{11, 11}}},
      {"99", {{49, 49}}},
      {"0", {}},
      {".", {{9, 9}}},
      {"current", {{9, 9}}},
      {".+3", {{12, 12}}},
      {". - 3", {{6, 6}}},
      {".-20", {{0, 0}}},
      {".+100", {{49, 49}}},
      {".+18446744073709551615", {{49, 49}}},
      {".+99999999999999999999", {}},
      {".+", {}},
      {".x", {}},
      {"BEGIN", {{0, 0}}},
      {"first", {{0, 0}}},
      {"LAST", {{49, 49}}},
      {"10 THRU 20", {{9, 19}}},
      {"20 thru 10", {{9, 19}}},
      {"10THRU20", {}},
      {"1:5", {{0, 4}}},
      {":5", {}},
      {"5:", {}},
      {"3-7", {{2, 6}}},
      {"-3", {}},
      {"7-", {}},
      {".-3", {{6, 6}}},
      {".-2:.+2", {{7, 11}}},
      {"BEGIN THRU .+5", {{0, 14}}},
      {"WHOLE", {{0, 49}}},
      {"REST", {{9, 49}}},
      {"1:5/BRIEF", {{0, 4}}},
      {"/1", {}},
      {"9999999999999999999999999", {}},
      {"4x", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(zan::parse_line_range(row.text, kContext), row.expected) << row.text;
  EXPECT_EQ(zan::parse_line_range("REST", {5, 8}), (zan::LineRange{8, 4}));
  EXPECT_EQ(zan::parse_number_range("4 THRU 2", 3), (zan::LineRange{1, 2}));
  EXPECT_FALSE(zan::parse_number_range("END", 3));
}

TEST(MacroText, SplitsAtSemicolonsOutsideQuotes) {
  using Commands = std::vector<std::string>;
  EXPECT_EQ(zan::split_macro_commands("TYPE 1; SUBSTITUTE 'a;b'"), (Commands{"TYPE 1", "SUBSTITUTE 'a;b'"}));
  EXPECT_EQ(zan::split_macro_commands("a;;b; "), (Commands{"a", "b"}));
  EXPECT_EQ(zan::split_macro_commands("a \"it's; one\";b\nc 'open; end"),
            (Commands{"a \"it's; one\"", "b", "c 'open; end"}));
}

TEST(HelpText, TopicsAreWholeWordsInAnyCase) {
  const std::string summary = zan::help_text("", "V1", "banner\n");
  EXPECT_TRUE(summary.starts_with("  V1\n  ====")) << summary;
  EXPECT_EQ(zan::help_text("SET TAB", "V1", ""), summary);
  EXPECT_EQ(zan::help_text(" version ", "V1", "banner\n"), "banner\n");
  EXPECT_TRUE(zan::help_text("set", "V1", "").starts_with("HELP SET \xE2\x80\x94 settings:\n"));
  EXPECT_EQ(zan::help_topics().size(), 10u);
}
