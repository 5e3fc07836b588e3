#include "command/qualifiers.h"

#include <gtest/gtest.h>

namespace {

using zan::Qualifiers;

TEST(Qualifiers, AreTakenOutOfTheLine) {
  struct Case {
    std::string line;
    std::string left;
    Qualifiers quals;
  };
  const Case cases[] = {
      {"TYPE 1:5", "TYPE 1:5", {}},
      {"TYPE/QUERY/notype /Save", "TYPE", {.query = true, .notype = true, .save = true}},
      {"X/GLOBAL/STAY/DUPLICATE", "X", {.global = true, .stay = true, .duplicate = true}},
      {"SUBS/a/b//g", "SUBS/a/b/", {.global = true}},
      {"TYPE /BRIEF 1:5", "TYPE  1:5", {.brief = true}},
      {"  /SAVE  ", "", {.save = true}},
      // a value belongs to its qualifier, a number or not
      {"TYPE/BRIEF:5 1:3", "TYPE 1:3", {.brief = true, .brief_width = 5}},
      {"T/brief:0", "T", {.brief = true, .brief_width = 1}},
      {"T/BRIEF:-3", "T-3", {.brief = true}},
      {"T/BRIEF:2147483648x", "Tx", {.brief = true}},
      {"T/BRIEF:7/BRIEF", "T", {.brief = true, .brief_width = 7}},
      {"R/SEQUENCE=10", "R", {.sequence = true, .seq_start = 10}},
      {"R/SEQUENCE=10:5 1:3", "R 1:3", {.sequence = true, .seq_start = 10, .seq_step = 5}},
      {"R/SEQUENCE=10:5/SAVE", "R", {.save = true, .sequence = true, .seq_start = 10, .seq_step = 5}},
      {"R/SEQUENCE=x:5", "R", {.sequence = true}},
      {"R/SEQUENCE=-7:", "R", {.sequence = true, .seq_start = -7}},
      {"R/SEQUENCE=:5", "R", {.sequence = true}},
      {"R /SEQUENCE=10/DUPLICATE", "R", {.duplicate = true, .sequence = true, .seq_start = 10}},
      // wherever they stand, and never a part of a word
      {"FIND \"a/SAVE\"", "FIND \"a\"", {.save = true}},
      {"SUBSTITUTE/save/keep/", "SUBSTITUTE/keep/", {.save = true}},
      {"SUBSTITUTE/saved/kept/", "SUBSTITUTE/saved/kept/", {}},
      {"X/GO //// /", "X/GO //// /", {}},
      {"//G", "/", {.global = true}},
      {std::string("a\0/SAVE\xff", 8), std::string("a\0\xff", 3), {.save = true}},
  };
  for (const Case& c : cases) {
    std::string line = c.line;
    EXPECT_EQ(zan::extract_qualifiers(line), c.quals) << c.line;
    EXPECT_EQ(line, c.left) << c.line;
  }
}

} // namespace
