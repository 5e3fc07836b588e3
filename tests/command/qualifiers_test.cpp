#include "command/qualifiers.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

namespace {

std::string told(const zan::Qualifiers& quals) {
  const std::pair<bool, const char*> flags[] = {
      {quals.query, " query"},   {quals.notype, " notype"}, {quals.brief, " brief"},
      {quals.save, " save"},     {quals.global, " global"}, {quals.stay, " stay"},
      {quals.duplicate, " dup"}, {quals.sequence, " seq"},
  };
  std::string text;
  for (const auto& [taken, name] : flags)
    if (taken) text += name;
  if (quals.brief) text += " " + std::to_string(quals.brief_width);
  if (quals.sequence) text += " " + std::to_string(quals.seq_start) + ":" + std::to_string(quals.seq_step);
  return text;
}

} // namespace

TEST(Qualifiers, AreTakenOutOfTheLine) {
  expect_rows("command/qualifiers", [](const Fields& row) {
    std::string line = row[0];
    const zan::Qualifiers quals = zan::extract_qualifiers(line);
    return line + "|" + told(quals);
  });
}
