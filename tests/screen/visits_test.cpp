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
    terminal.type("\032");
    terminal.shows_text("*CHANGE");
    terminal.type("TYPE 3\n");
    terminal.shows_text("3 three");
  }
  terminal.resize(10, 40);
  terminal.type("TYPE 2\n");
  terminal.shows_text("2 two");
  terminal.type("EXIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  std::size_t numeric = 0;
  for (std::size_t at = 0; (at = terminal.output().find("\033>", at)) != std::string::npos; ++at) ++numeric;
  EXPECT_EQ(numeric, 3U);
}
