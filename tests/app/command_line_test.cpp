#include "app/command_line.h"

#include <gtest/gtest.h>

#include "text/bytes.h"

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

TEST(Bytes, NumbersAsTheyAreTyped) {
  EXPECT_EQ(zan::parse_digits("18446744073709551615"), UINT64_MAX);
  for (const char* text : {"", "+4", " 4", "4x", "-1", "18446744073709551616"})
    EXPECT_FALSE(zan::parse_digits(text)) << text;
  struct Row {
    const char* text;
    std::optional<int> expected;
  };
  const Row rows[] = {{"+4", 4},  {" 4", 4}, {"4x", 4},          {"-3", -3},
                      {"x4", {}}, {"", {}},  {"2147483648", {}}, {"-2147483648", INT32_MIN}};
  for (const Row& row : rows) EXPECT_EQ(zan::parse_int_prefix(row.text), row.expected) << row.text;
  EXPECT_EQ(zan::trim(std::string_view(" \t\0\xa0 ", 5)), std::string_view("\0\xa0", 2));
  EXPECT_EQ(zan::upper("a\xe9z"), "A\xe9Z");
}
