#include "command/help_text.h"

#include <gtest/gtest.h>

TEST(HelpText, TopicsAreWholeWordsInAnyCase) {
  const std::string summary = zan::help_text("", "V1", "banner\n");
  EXPECT_TRUE(summary.starts_with("  V1\n  ====")) << summary;
  EXPECT_EQ(zan::help_text("SET TAB", "V1", ""), summary);
  EXPECT_EQ(zan::help_text(" version ", "V1", "banner\n"), "banner\n");
  EXPECT_TRUE(zan::help_text("set", "V1", "").starts_with("HELP SET \xE2\x80\x94 settings:\n"));
  EXPECT_EQ(zan::help_topics().size(), 10u);
}
