#include <gtest/gtest.h>

#include "tests/screen/terminal_driver.h"

// Coming and going: what a visit of the screen leaves behind, and what can be done in one beside editing.
namespace {

TerminalOptions wide() {
  TerminalOptions options;
  options.columns = 80;
  return options;
}

void enter_screen(TerminalDriver& terminal, const char* shown = "Ctrl/Z=CMD") {
  terminal.shows_text("*");
  terminal.type("CHANGE\n");
  terminal.shows_text(shown);
}

} // namespace

TEST(Visits, KeysAreDefinedWithCtrlK) {
  struct Step {
    std::string keys, message;
    int row;
  };
  const std::vector<Step> steps{{"\013", "Press key to define", 0},
                                {"\033OP", "GOLD — press key", 0},
                                {"qBOTTOM\r", "Key defined: GOLD+Q", 0},
                                {"\033OPq", "BOTTOM", 2},
                                {"\013\033[A", "Invalid key for DEFINE KEY", 2}};
  TerminalDriver terminal(wide());
  enter_screen(terminal);
  for (const auto& step : steps) {
    terminal.type(step.keys);
    const auto fits = [&](const Shown& now) {
      return now.rows.back() == step.message && now.cursor_row == step.row;
    };
    terminal.wait_until(fits, "  " + step.message + "\n");
  }
}

TEST(Visits, NokeypadMode) {
  TerminalOptions options = wide();
  options.startup = "SET KEYPAD NOKEYPAD\n";
  TerminalDriver terminal(options);
  enter_screen(terminal, "Nokeypad:");
  terminal.type("LIab\033C\r");
  terminal.wait_until([](const Shown& now) { return now.row(1) == "abtwo"; }, "  abtwo\n");
  terminal.type("XYZ\rW EX W\r");
  terminal.shows_text("*CHANGE");
  enter_screen(terminal, "Nokeypad:");
  terminal.type("\032\rQUIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
}

// The keypad's numeric mode reaches the terminal once for each visit, and a new size of the terminal at the
// prompt is not the end of the input.
TEST(Visits, LeaveTheTerminalAsItWas) {
  TerminalDriver terminal(wide());
  for (int visit = 0; visit < 3; ++visit) {
    enter_screen(terminal);
    terminal.type("\033OP\033OwCHANGE\r\032"); // a visit inside the visit
    terminal.shows_text("Command mode");
    terminal.type("\032TYPE 3\r"); // ahead of line mode, to which Return is another byte
    terminal.shows_text("3 three");
  }
  terminal.resize(10, 40);
  terminal.type("TYPE 2\n");
  terminal.shows_text("2 two");
  terminal.type("EXIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  EXPECT_EQ(terminal.times_sent("\033>"), 3U);
}

TEST(Visits, ByAMacro) {
  const auto on_screen = [](const Shown& now) { return now.row(3) == "[EOB]"; };
  const auto in_line_mode = [&](const Shown& now) { return !on_screen(now); };
  TerminalOptions options = wide();
  options.startup = "DEFINE MACRO M AS \"CHANGE\"\n";
  TerminalDriver terminal(options);
  constexpr std::size_t kTimes = 25;
  for (std::size_t i = 0; i < kTimes; ++i) {
    terminal.type("M\n");
    terminal.wait_until(on_screen, "  [EOB]\n");
    terminal.type("\033OP\033OwM\rx\032y\032"); // inside the first visit, a second
    terminal.wait_until(in_line_mode, "  line mode\n");
  }
  terminal.type("TYPE 1\n");
  terminal.shows_text("1 " + std::string("xyxyxyxyxy"));
  terminal.type("QUIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  EXPECT_EQ(terminal.times_sent("\033>"), kTimes);
  EXPECT_TRUE(terminal.has_its_modes());
}

// A command that reads lines reads them at the screen's prompt.
TEST(Visits, CommandsThatReadLines) {
  struct Case {
    std::string typed, shown; // at the prompt, and then in the text
  };
  const std::vector<Case> cases{
      {"INSERT\raa\rbb\r.\r", "bbone"},
      {"INSERT\raa\r\032\r", "aaone"},
      {"INSERT\raa\r\003", "aaone"},
      {"INSERT\r\003\033[6~", "three"},
      {"DEFINE MACRO M\rINSERT zz\rEND\r\033OP\033OwM\r", "zzone"},
  };
  for (const auto& [typed, shown] : cases) {
    TerminalDriver terminal(wide());
    enter_screen(terminal);
    terminal.type("\033OP\033Ow" + typed);
    terminal.shows_text(shown);
  }
}
