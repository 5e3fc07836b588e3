#include "app/command_line.h"

#include <gtest/gtest.h>

TEST(CommandLine, OptionsAndFiles) {
  using Files = std::vector<std::string>;
  const auto line = zan::parse_command_line({"b.txt", "/read_only", "-READONLY", "/LOG", "/tmp/a.txt", "/9",
                                             "", "/output=Out.TXT", "-output=last", "-command", "-d",
                                             "-journal=j", "/DeBug_Keys", "-command"});
  EXPECT_EQ(line.files, (Files{"b.txt", "/tmp/a.txt", "/9", ""}));
  EXPECT_TRUE(line.read_only && line.debug_keys);
  EXPECT_FALSE(line.recover || line.help);
  EXPECT_EQ(line.output, "last");
  EXPECT_EQ(line.command, "-d");
  EXPECT_EQ(line.journal, "j");
  EXPECT_EQ(line.messages, "?Missing file after -command\n");
  const auto help = zan::parse_command_line({"a", "-recover", "--help", "b"});
  EXPECT_TRUE(help.help && help.recover);
  EXPECT_EQ(help.files, Files{"a"});
}
