#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

#include "recovery/restore.h"
#include "tests/promise.h"
#include "tests/screen/terminal_driver.h"

// What was typed at a terminal outlives kill -9.
namespace {

std::string session_file(const TerminalDriver& terminal) {
  for (const std::string& name : terminal.home().names())
    if (name.starts_with(".") && !name.starts_with("..") && name.find(".zan-recovery-") != name.npos)
      return terminal.home() / name;
  return "";
}

bool is_recorded(TerminalDriver& terminal, std::string_view text) {
  const auto recorded = [&](const Shown&) {
    return zan::test::read_file(session_file(terminal)).find(text) != std::string::npos;
  };
  return terminal.wait_until(recorded, "  recorded: " + std::string(text) + "\n");
}

struct Way {
  const char* keys; // line by line at the prompt, or on the screen
  const char* recorded;
  const char* file; // that the text is restored to
  const char* text;
};

// The keypad's keys: GOLD is PF1.
constexpr Way kWays[] = {
    {"CHANGE\nhello ", "hello ", "notes.txt.save", "hello one\ntwo\nthree\n"},
    {"INSERT hello\n", "hello", "notes.txt.save", "helloone\ntwo\nthree\n"},
    {"INSERT\nfirst\nsecond\n", "first\nsecond", "notes.txt.save", "first\nsecondone\ntwo\nthree\n"},
    {"SET KEYPAD NOKEYPAD\nCHANGE\nIhello\r", "hello", "notes.txt.save", "helloone\ntwo\nthree\n"},
    {"FIND =OTHER\nINSERT elsewhere\n", "elsewhere", "notes.txt.OTHER.save", "elsewhere\n"},
    {"COPY 2 TO =PASTE\n", "two", "notes.txt.PASTE.save", "two\n"},
    {"DEFINE MACRO M\nTOP\nBOTTOM\n", "TOP\nBOTTOM", "notes.txt.M.save", "TOP\nBOTTOM\n"},
};

// All at once: each waits for a second.
TEST(Recovery, WhatWasTypedIsFoundByTheNextSession) {
  std::vector<std::unique_ptr<TerminalDriver>> terminals;
  for (const Way& way : kWays) {
    terminals.push_back(std::make_unique<TerminalDriver>(TerminalOptions{}));
    terminals.back()->shows_text("1 one");
    terminals.back()->type(way.keys);
  }
  for (std::size_t i = 0; i < terminals.size(); ++i) {
    const Way& way = kWays[i];
    TerminalDriver& terminal = *terminals[i];
    SCOPED_TRACE(way.keys);
    ASSERT_TRUE(is_recorded(terminal, way.recorded));
    kill(terminal.program(), SIGKILL);
    EXPECT_EQ(terminal.exit_status(), 128 + SIGKILL);
    TerminalOptions again;
    again.home = terminal.shared_home();
    TerminalDriver next(again);
    next.shows_text("1 one");
    EXPECT_EQ(next.times_sent(" on notes.txt ended early; its text is in notes.txt."), 1U);
    EXPECT_EQ(zan::test::read_file(terminal.home() / way.file), way.text);
    EXPECT_EQ(session_file(terminal), "");
  }
}

struct End {
  const char* keys; // nothing: the terminal goes
  bool rescued;
};

TEST(Recovery, NothingComesBackAfterAnOrdinaryEnd) {
  for (const End& end : {End{"EXIT\n", false}, End{"QUIT\n", false}, End{"\004", true}, End{nullptr, true}}) {
    SCOPED_TRACE(end.keys == nullptr ? "hang-up" : end.keys);
    TerminalDriver terminal({});
    terminal.shows_text("1 one");
    terminal.type("INSERT hello\n");
    ASSERT_TRUE(is_recorded(terminal, "hello"));
    if (end.keys != nullptr) terminal.type(end.keys);
    else terminal.hang_up();
    terminal.exit_status();
    EXPECT_EQ(session_file(terminal), "");
    EXPECT_EQ(std::filesystem::exists(terminal.home() / "notes.txt.save"), end.rescued);
  }
}

TEST(Recovery, TellsOfASessionThatLivesAndOfNoneWhereItIsOff) {
  TerminalDriver terminal({});
  terminal.shows_text("1 one");
  terminal.type("SHOW RECOVERY\nINSERT hello\n");
  terminal.shows_text("Recovery: ON");
  ASSERT_TRUE(is_recorded(terminal, "hello"));
  TerminalOptions options;
  options.home = terminal.shared_home();
  TerminalDriver other(options);
  other.shows_text("?notes.txt is being edited by process " + std::to_string(terminal.program()));
  terminal.type("SET NORECOVERY\n");
  terminal.wait_until([&](const Shown&) { return session_file(terminal).empty(); }, "  no file\n");
  options.arguments = {"-recover"};
  TerminalDriver silent(options);
  silent.shows_text("1 helloone");
  EXPECT_EQ(silent.times_sent("process"), 0U);
}

// All of a long file but what was typed stays where it is.
TEST(Recovery, AKeyInALongFileIsRecordedInAFewBytes) {
  TerminalOptions options;
  for (int line = 0; line < 200'000; ++line) options.text += "a line of text\n";
  TerminalDriver terminal(options);
  terminal.enter_screen();
  terminal.type("typed");
  ASSERT_TRUE(is_recorded(terminal, "typed"));
  EXPECT_LT(std::filesystem::file_size(session_file(terminal)), 1000U);
}

TEST(Recovery, WhatWasTypedIntoTheNextFileIsSaidOnTheMessageRow) {
  TerminalOptions options;
  options.columns = 120;
  options.arguments = {"other.txt"};
  TerminalDriver dead(options);
  dead.shows_text("1 one");
  dead.type("NEXT\nINSERT hello\n");
  ASSERT_TRUE(is_recorded(dead, "hello"));
  kill(dead.program(), SIGKILL);
  dead.exit_status();
  options.home = dead.shared_home();
  TerminalDriver terminal(options);
  terminal.enter_screen();
  terminal.type("{GOLD}{KP7}NEXT\r");
  terminal.shows_text("on other.txt ended early; its text is in other.txt.save");
}

// Places where words can be typed: how one gets there, and what stands around a word.
struct Typist {
  const char* name;
  const char* begin;
  const char* before;
  const char* behind;
};

constexpr Typist kTypists[] = {
    {"screen", "CHANGE\n", "", " "},
    {"prompt", "", "INSERT ", "\n"},
    {"bare INSERT", "INSERT\n", "", "\n"},
    {"nokeypad", "SET KEYPAD NOKEYPAD\nCHANGE\n", "I", " \r"},
    {"another buffer", "FIND =OTHER\nCHANGE\n", "", " "},
};

std::string word(int number) { return "w" + std::to_string(number) + "w"; }

// How many of the words, from the first on, are in the text.
int words_in(std::string_view text) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(word(count), at)) != std::string_view::npos; ++count) continue;
  return count;
}

int words_recorded(const TerminalDriver& terminal) {
  const auto session = zan::read_session(zan::test::read_file(session_file(terminal)));
  int count = 0;
  if (session)
    for (const auto& text : session->texts) count = std::max(count, words_in(text.text.to_string()));
  return count;
}

int words_restored(const std::shared_ptr<zan::test::ScratchDirectory>& home) {
  TerminalOptions options;
  options.home = home;
  TerminalDriver(options).shows_text("1 one");
  int count = 0;
  for (const std::string& name : home->names())
    if (name.ends_with(".save")) count = std::max(count, words_in(zan::test::read_file(*home / name)));
  return count;
}

// Some typists at a time; each is killed at a moment of its own.
void type_and_kill(unsigned seed, zan::test::Promise& promise) {
  std::mt19937 random(seed);
  std::vector<std::unique_ptr<TerminalDriver>> terminals;
  std::vector<std::uint64_t> ends;
  for (const Typist& typist : kTypists) {
    terminals.push_back(std::make_unique<TerminalDriver>(TerminalOptions{}));
    terminals.back()->shows_text("1 one");
    terminals.back()->type(typist.begin);
    ends.push_back(10 + random() % 60);
  }
  for (std::uint64_t number = 0; number < 70; ++number) {
    for (std::size_t i = 0; i < terminals.size(); ++i) {
      const Typist& typist = kTypists[i];
      TerminalDriver& terminal = *terminals[i];
      if (number < ends[i]) terminal.type(typist.before + word(static_cast<int>(number)) + typist.behind);
      if (number != ends[i]) continue;
      const int recorded = words_recorded(terminal);
      kill(terminal.program(), SIGKILL);
      terminal.exit_status();
      promise.expect(words_restored(terminal.shared_home()) >= recorded, typist.name);
    }
    for (const auto& terminal : terminals) terminal->pause(10);
  }
}

TEST(Recovery, WordsThatWereRecordedComeBack) {
  zan::test::Promise promise(zan::test::Promised::killed_typing);
  const unsigned batches = zan::test::long_form() ? 200 : 1;
  for (unsigned seed = 1; seed <= batches; ++seed) type_and_kill(seed, promise);
}

} // namespace
