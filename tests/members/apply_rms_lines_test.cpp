#include "app/editor.h"

#include <gtest/gtest.h>

TEST(ApplyRmsLines, GivesRecordsOnlyWhenTheyAreFixed) {
  using Lines = std::vector<std::string>;
  Editor editor({}, std::nullopt, std::nullopt, false, false, std::nullopt);
  const Lines lines{"", "abc", "a\nbcd", "abcdef"};
  EXPECT_EQ(editor.apply_rms_lines(lines), lines);
  editor.rms_fixed = true;
  editor.rms_record_length = 3;
  EXPECT_EQ(editor.apply_rms_lines(lines), (Lines{"   ", "abc", "a\nb", "cd ", "abc", "def"}));
  editor.rms_record_length = 0;
  EXPECT_EQ(editor.apply_rms_lines(lines), lines);
}
