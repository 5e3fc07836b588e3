#include "command/macro_text.h"

#include <gtest/gtest.h>

namespace {

using Commands = std::vector<std::string>;

TEST(MacroText, SplitsOutsideQuotes) {
  const std::pair<std::string, Commands> cases[] = {
      {"TOP; FILL WHOLE; TYPE 1", {"TOP", "FILL WHOLE", "TYPE 1"}},
      {"TYPE 1; SUBSTITUTE 'a;b'", {"TYPE 1", "SUBSTITUTE 'a;b'"}},
      {"a;;b;", {"a", "b"}},
      {"a\n b\r\n;\nc", {"a", "b", "c"}},
      {R"(F "it's; so";G 'say "x;";' ; H)", {R"(F "it's; so")", R"(G 'say "x;";')", "H"}},
      {"a\"b\n;c", {"a\"b\n;c"}},
      {"x'y';'z;", {"x'y'", "'z;"}},
      {"a \"it's; one\";b\nc 'open; end", {"a \"it's; one\"", "b", "c 'open; end"}},
      {" ; \n", {}},
      {"", {}},
  };
  for (const auto& [definition, commands] : cases)
    EXPECT_EQ(zan::split_macro_commands(definition), commands) << definition;
}

} // namespace
