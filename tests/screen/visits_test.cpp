#include <algorithm>
#include <gtest/gtest.h>

#include "tests/promise.h"
#include "tests/screen/key_names.h"
#include "tests/screen/terminal_driver.h"
#include "tests/sessions/run_program.h"
#include "tests/sessions/text_forms.h"

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
  // Of TERM, but "dumb" of SET TERMINAL.
  const std::optional<std::string> terms[] = {std::nullopt,
                                              "",
                                              "no-such-terminal",
                                              "unknown",
                                              "hardcopy",
                                              "dumb",
                                              "../x/xterm",
                                              "/usr/share/terminfo/x/xterm",
                                              std::string(4096, 'x')};
  zan::test::Promise promise(zan::test::Promised::no_cursor);
  for (const auto& term : terms) {
    const std::string named = term.value_or("");
    SCOPED_TRACE(named);
    TerminalOptions options;
    options.term = named == "dumb" ? "xterm" : term;
    const std::string command = named == "dumb" ? "SET TERMINAL dumb\n" : "";
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

TEST(Visits, KeysFromAPipeOrFile) {
  for (const std::string start : {"", " <keys"}) {
    expect_rows("screen/piped_keys", [&](const Fields& row) {
      const std::string input = key_bytes(row[0]);
      const zan::test::ScratchDirectory home;
      std::filesystem::create_directory(home / "work");
      zan::test::write_file(home / "work/notes.txt", "one\ntwo\n");
      zan::test::write_file(home / "work/keys", input);
      const std::string command = "exec '" ZAN_PROGRAM "' notes.txt" + start;
      const RunResult run =
          run_program("/bin/sh", {"-c", command}, {{"TERM", "xterm"}, {"HOME", "."}}, home.path(), input);
      EXPECT_EQ(run.status, 0) << start;
      return zan::test::read_file(home / "work/copy");
    });
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
