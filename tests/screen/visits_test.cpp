#include <algorithm>
#include <gtest/gtest.h>

#include "tests/promise.h"
#include "tests/screen/key_names.h"
#include "tests/screen/terminal_driver.h"
#include "tests/sessions/run_program.h"

// Visits to the screen that no text tells of: what comes and goes in bulk, and what they leave behind.

TEST(Visits, CtrlCEndsARepetitionOfNokeypadMode) {
  TerminalOptions options;
  options.text = std::string(4 << 20, 'q') + "\n";
  options.startup = "SET KEYPAD NOKEYPAD\n";
  TerminalDriver nokeypad(options);
  nokeypad.enter_screen("Nokeypad:");
  nokeypad.type("2000000000DC\r{CTRL+C}Iz\r");
  nokeypad.shows_text("zqqq");
}

TEST(Visits, PasteArrivesWhole) {
  TerminalDriver terminal({});
  terminal.enter_screen();
  std::string pasted;
  for (int i = 0; i < 2000; ++i) pasted += "line " + std::to_string(i) + " of the paste\r";
  terminal.type(pasted);
  terminal.shows_text("line 1999 of");
  terminal.type("{CTRL+Z}EXIT\n");
  EXPECT_EQ(terminal.exit_status(), 0);
  std::ranges::replace(pasted, '\r', '\n');
  EXPECT_EQ(terminal.file(), pasted + "one\ntwo\nthree\n");
}

// It matters more than that its place was saved.
TEST(Visits, AnotherProgramsTextIsOnTheMessageRow) {
  TerminalOptions options;
  options.columns = 80;
  TerminalDriver terminal(options);
  terminal.enter_screen();
  zan::test::write_file(terminal.home() / "notes.txt", "theirs\n");
  terminal.type("\033OP\033OwTYPE/SAVE\r");
  terminal.shows_text("?notes.txt was changed by another program; its text is in notes.txt.save");
}

TEST(Visits, OneBellForMuchThatAPromptRefuses) {
  constexpr std::size_t kMany = 100'000;
  TerminalDriver terminal({});
  terminal.enter_screen();
  terminal.type("{GOLD}{KP7}INSERT " + std::string(kMany, 'x'));
  terminal.shows_text("xxxx");
  terminal.type("{CTRL+U}INSERT end\r");
  terminal.shows_text("endone");
  EXPECT_GE(terminal.times_sent("\a"), 1U);
  EXPECT_LT(terminal.times_sent("\a"), kMany / 16);
}

TEST(Visits, TerminalsWithoutACursorAreRefused) {
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
  zan::test::Promise promise(zan::test::Promised::no_cursor);
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
    terminal.type("{CTRL+Z}EXIT\n");
    EXPECT_EQ(terminal.exit_status(), 0);
    promise.expect(terminal.file() == "zeroone\ntwo\nthree\n", named);
  }
}

// After CHANGE the rest of a pipe or file is keys, after Ctrl/Z commands again; its end ends screen mode.
TEST(Visits, KeysFromAPipeOrFile) {
  struct Case {
    std::string_view typed, copy;
  };
  const Case cases[] = {
      {"CHANGE\nhello\rworld{CTRL+Z}WRITE copy\n", "hello\nworldone\ntwo\n"},
      {"CHANGE\nhello\rworld{GOLD}{KP7}WRITE copy\r", "hello\nworldone\ntwo\n"},
      {"CHANGE\n{GOLD}3{KP1}{CTRL+Z}CHANGE\nY{CTRL+Z}T\nWRITE copy\n", "ONEY\ntwo\n"},
      {"CHANGE\nX{CTRL+Z}PRINT\nCHANGE\nY{CTRL+Z}WRITE copy\n", "XYone\ntwo\n"},
      {"SET NOKEYPAD\nCHANGE\nW\nDW\nEX\nWRITE copy\n", "one\n\n"},
      {"CHANGE\n{GOLD}3{KP1}{CTRL+Z}INSERT x{CTRL+C}y\nWRITE copy\n", "ONEx\3y\ntwo\n"},
      {"CHANGE\n{GOLD}{KP7}INSERT\r{CTRL+Z}z\r{CTRL+Z}\r{CTRL+Z}WRITE copy\n", "\32zone\ntwo\n"},
  };
  for (const auto& [typed, copy] : cases) {
    for (const std::string start : {"", " <keys"}) {
      const std::string input = key_bytes(typed);
      SCOPED_TRACE(std::string(typed) + start);
      const zan::test::ScratchDirectory home;
      std::filesystem::create_directory(home / "work");
      zan::test::write_file(home / "work/notes.txt", "one\ntwo\n");
      zan::test::write_file(home / "work/keys", input);
      const std::string command = "exec '" ZAN_PROGRAM "' notes.txt" + start;
      const RunResult run =
          run_program("/bin/sh", {"-c", command}, {{"TERM", "xterm"}, {"HOME", "."}}, home.path(), input);
      EXPECT_EQ(run.status, 0);
      EXPECT_EQ(zan::test::read_file(home / "work/copy"), copy);
    }
  }
}

TEST(Visits, ATerminalThatDoesNotWaitIsWaitedFor) {
  TerminalOptions options;
  options.nonblocking = true;
  for (int i = 0; i < 5000; ++i) options.text += "more\n";
  TerminalDriver terminal(options);
  terminal.shows_text("*");
  terminal.type("TYPE WHOLE\n");
  terminal.shows_text("5003 more");
  EXPECT_EQ(terminal.times_sent(" more\r\n"), 5000U);
  terminal.enter_screen();
  terminal.type("x");
  terminal.shows_text("xone");
  terminal.type("{CTRL+Z}EXIT\r");
  EXPECT_EQ(terminal.exit_status(), 0);
}
