#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/promise.h"
#include "tests/screen/terminal_driver.h"

// Whole visits to the screen: what is typed and what stands on the terminal then.
namespace {

const std::string kSeparator(64, '-');
const std::string kHint = "  PF1=GOLD PF3=FNDNXT GOLD+PF3=FIND";

struct Step {
  std::string keys;
  Shown wanted;
};

void enter_screen(TerminalDriver& terminal) {
  terminal.type("CHANGE\n");
  terminal.shows_text(kHint);
}

// Five rows of text, the status up to the hint, the message.
Shown screen(std::vector<std::string> text, const std::string& status, const std::string& message, int row,
             int column) {
  Shown wanted{std::move(text), row, column};
  wanted.rows.resize(5);
  wanted.rows.push_back(kSeparator);
  wanted.rows.push_back((status + kHint + " Ctrl/Z=CMD").substr(0, 64));
  wanted.rows.back().erase(wanted.rows.back().find_last_not_of(' ') + 1);
  wanted.rows.push_back(message);
  return wanted;
}

void play(const TerminalOptions& options, const std::vector<Step>& steps) {
  TerminalDriver terminal(options);
  enter_screen(terminal);
  for (const Step& step : steps) {
    SCOPED_TRACE(step.keys);
    terminal.type(step.keys);
    if (!terminal.shows(step.wanted)) return;
  }
}

} // namespace

TEST(Screen, EditsTextInABufferAndPastesInAnother) {
  play({}, {
               {"", screen({"one", "two", "three", "[EOB]"}, " EDIT[MAIN] ADVANCE", "", 0, 0)},
               {"\033On\033OB\033[C",
                screen({"{one}", "{t}wo", "three", "[EOB]"}, " EDIT[MAIN] ADVANCE SELECT", "SELECT", 1, 1)},
               {"\033Ov", screen({"wo", "three", "[EOB]"}, " EDIT[MAIN] ADVANCE *", "SELECT", 0, 0)},
               {"\033OP\033OwFIND =OTHER\r\033OP\033Ov",
                screen({"one", "t", "[EOB]"}, " EDIT[OTHER] ADVANCE *", "PASTE", 1, 1)},
               {"\033OP\033Owundo\r", screen({"", "[EOB]"}, " EDIT[OTHER] ADVANCE", "UNDO", 0, 0)},
           });
}

TEST(Screen, FindsAndReplaces) {
  play({},
       {
           {"new\025\033OP\033ORt\r",
            screen({"one", "two", "three", "[EOB]"}, " EDIT[MAIN] ADVANCE *", "Found: t", 1, 0)},
           {"\033OR", screen({"one", "two", "three", "[EOB]"}, " EDIT[MAIN] ADVANCE *", "Found: t", 2, 0)},
           {"\033OP\033OM",
            screen({"one", "two", "newhree", "[EOB]"}, " EDIT[MAIN] ADVANCE *", "Substituted", 1, 0)},
           {"\033OP\033OM",
            screen({"one", "newwo", "newhree", "[EOB]"}, " EDIT[MAIN] ADVANCE *", "Substituted", 1, 3)},
       });
}

TEST(Screen, LongAndStrangeLines) {
  TerminalOptions options;
  options.text =
      std::string(70, 'a') + "z\n" + std::string("\0\t\rX\b", 5) + std::string(200, '\f') + "\nend\n";
  TerminalDriver terminal(options);
  enter_screen(terminal);
  terminal.wait_until(
      [](const Shown& now) { return now.row(0) == std::string(64, 'a') && now.row(2) == "end"; },
      "  a...\n  ...\n  end\n");
  terminal.type("\005");
  terminal.shows_text("col+9");
  terminal.wait_until([](const Shown& now) { return now.cursor_row == 0 && now.cursor_column == 62; },
                      "  cursor 0 62\n");
}

TEST(Screen, PromptScrollsAndSurvivesAResize) {
  TerminalOptions options;
  options.columns = 24;
  TerminalDriver terminal(options);
  terminal.type("CHANGE\n");
  terminal.shows_text("[EOB]");
  terminal.type("\033OP\033OwINSERT ");
  terminal.type(std::string(30, 'x') + "yz\032\003\033OP\033Owinclude");
  terminal.shows_text("Command: include");
  terminal.resize(10, 40);
  terminal.wait_until(
      [](const Shown& now) { return now.rows.back() == "Command: include" && now.cursor_row == 9; },
      "  Command: include\n");
  terminal.type("\025" + std::string(60, 'q'));
  terminal.wait_until([](const Shown& now) { return now.rows.back() == std::string(39, 'q'); }, "  q...\n");
  terminal.type("\r");
  terminal.wait_until([](const Shown& now) { return now.cursor_row == 0; }, "  cursor 0 0\n");
}

// Every size is taken over, and typing goes on at all of them.
TEST(Screen, AnySize) {
  TerminalDriver terminal({});
  enter_screen(terminal);
  std::string typed;
  for (const auto& [rows, columns] :
       {std::pair(1, 1), {24, 80}, {1, 500}, {4, 12}, {200, 1}, {200, 500}, {2, 2}, {9, 20}, {8, 64}}) {
    terminal.resize(rows, columns);
    if (rows > 3 && columns > 10) terminal.shows_text("EDIT[MAIN]");
    terminal.type("a");
    typed += "a";
  }
  terminal.type("\002");
  terminal.shows(screen({typed + "one", "two", "three", "[EOB]"}, " EDIT[MAIN] ADVANCE *", "", 0, 0));
}

TEST(Screen, CtrlCEndsARepetitionAndNothingElse) {
  TerminalDriver terminal({});
  enter_screen(terminal);
  terminal.type("\033OP2000000000\033[Cab\003c");
  terminal.shows_text(" abcone");

  TerminalOptions options;
  options.text = std::string(4 << 20, 'q') + "\n";
  options.startup = "SET KEYPAD NOKEYPAD\n";
  TerminalDriver nokeypad(options);
  nokeypad.type("CHANGE\n");
  nokeypad.shows_text("Nokeypad:");
  nokeypad.type("2000000000DC\r\003Iz\r");
  nokeypad.shows_text("zqqq");
}

TEST(Screen, HelpPage) {
  for (const int rows : {24, 40}) {
    TerminalOptions options;
    options.rows = rows;
    options.columns = 100;
    TerminalDriver terminal(options);
    enter_screen(terminal);
    terminal.type("\033OQ");
    terminal.shows_text("V1.05-0  ZAN keypad editor - screen help");
    terminal.shows_text(rows == 24 ? "GOLD+digits N     repeat next GOLD cmd N times"
                                   : "Press any key to continue");
    terminal.type("\032");
    terminal.shows_text("[EOB]");
  }
}

TEST(Screen, SavesFromTheScreen) {
  TerminalDriver terminal({});
  enter_screen(terminal);
  terminal.type("zero\r\033OP\033OwEXIT\r");
  EXPECT_EQ(terminal.exit_status(), 0);
  EXPECT_EQ(terminal.file(), "zero\none\ntwo\nthree\n");
  EXPECT_NE(terminal.output().rfind("notes.txt 4 lines"), std::string::npos);
}

TEST(Screen, PasteArrivesWhole) {
  TerminalDriver terminal({});
  enter_screen(terminal);
  std::string pasted;
  for (int i = 0; i < 2000; ++i) pasted += "line " + std::to_string(i) + " of the paste\r";
  terminal.type(pasted);
  terminal.shows_text("line 1999 of");
  terminal.type("\032EXIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  std::ranges::replace(pasted, '\r', '\n');
  EXPECT_EQ(terminal.file(), pasted + "one\ntwo\nthree\n");
}

TEST(Screen, TerminalsWithoutACursorAreRefused) {
  struct Case {
    std::optional<std::string> term;
    std::string command, named; // a command before CHANGE, and the name in the message
  };
  const std::string endless(4096, 'x');
  const Case cases[] = {{std::nullopt, "", ""},
                        {"", "", ""},
                        {"no-such-terminal", "", "no-such-terminal"},
                        {"unknown", "", "unknown"},
                        {"hardcopy", "", "hardcopy"},
                        {"xterm", "SET TERMINAL dumb\n", "dumb"},
                        {"../x/xterm", "", "../x/xterm"},
                        {"/usr/share/terminfo/x/xterm", "", "/usr/share/terminfo/x/xterm"},
                        {endless, "", endless}};
  zan::test::Promise promise(11);
  for (const auto& [term, command, named] : cases) {
    SCOPED_TRACE(named);
    TerminalOptions options;
    options.term = term;
    TerminalDriver terminal(options);
    terminal.type(command + "INSERT zero\nCHANGE\nTYPE 2\nSET TERMINAL vt100\n");
    terminal.shows_text("Terminal: vt100");
    EXPECT_TRUE(terminal.has_its_modes());
    EXPECT_NE(terminal.output().find("?Cannot start screen mode: " + named + "\r\n"), std::string::npos);
    EXPECT_NE(terminal.output().find("2 two\r\n"), std::string::npos);
    terminal.type("CHANGE\n");
    terminal.shows_text("zeroone");
    terminal.type("\032EXIT\n");
    EXPECT_EQ(terminal.exit_status(), 0);
    promise.expect(terminal.file() == "zeroone\ntwo\nthree\n", named);
  }
}

// After CHANGE the rest of a pipe is keys, after Ctrl/Z commands again; its end ends screen mode.
TEST(Screen, KeysFromAPipe) {
  for (const std::string end : {"\\032WRITE copy.txt\\n", "\\033OP\\033OwWRITE copy.txt\\r"}) {
    const zan::test::ScratchDirectory home;
    const std::string input = "printf 'CHANGE\\nhello\\rworld" + end + "'";
    const std::string program = "TERM=xterm HOME=. timeout 20 " ZAN_PROGRAM " notes.txt >screen.out";
    EXPECT_EQ(std::system(("cd " + home.path() + " && " + input + " | " + program).c_str()), 0);
    EXPECT_EQ(zan::test::read_file(home / "copy.txt"), "hello\nworld\n");
  }
}
