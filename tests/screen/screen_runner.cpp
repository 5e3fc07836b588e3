// Plays the files beside this one, *.screen: what is typed into the program on a terminal of 8 rows and 64
// columns, and what stands there then. A line "== " begins each visit, on a file of the lines "one", "two"
// and "three". Escapes are those of C, and \e is ESC.
//
//   text BYTES, startup BYTES    before all else: other text, commands of the startup file
//   option WORD                  of the command line, before all else
//   size ROWS COLUMNS            of the terminal, before the start or from now on
//   keys BYTES                   typed; {KP7} stands for what that key sends
//   shows TEXT                   it comes to stand somewhere
//   row NUMBER TEXT              it is a row, of which the first is 0 and -1 the last
//   cursor ROW COLUMN
//   picture                      all rows; they follow, each with a | before it, reverse video in braces
//   exit STATUS                  the program's end
//   sent TIMES BYTES             to the terminal, so far
//   file BYTES                   its text on the disk
#include <optional>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/screen/terminal_driver.h"
#include "tests/sessions/text_forms.h"

namespace {

class Visit {
 public:
  explicit Visit(const Transcript& transcript) : transcript_(transcript) {}

  void play() {
    while (next_ < transcript_.lines.size() && !testing::Test::HasFailure()) {
      const auto& [place, text] = transcript_.lines[next_++];
      SCOPED_TRACE(place);
      const auto [word, rest] = split_word(text);
      if (word.empty() || word == "#") continue;
      if (!terminal_ && prepare(word, rest)) continue;
      if (!terminal_) terminal_.emplace(options_).shows_text("*");
      act(word, rest);
    }
  }

 private:
  bool prepare(const std::string& word, const std::string& rest) {
    if (word == "text") options_.text = unescape(rest);
    else if (word == "startup") options_.startup = unescape(rest);
    else if (word == "option") options_.arguments = {rest};
    else if (word == "size") std::istringstream(rest) >> options_.rows >> options_.columns;
    else return false;
    return true;
  }

  void act(const std::string& word, const std::string& rest) {
    int first = 0;
    int second = 0;
    std::istringstream(rest) >> first >> second;
    if (word == "keys") {
      terminal_->type(unescape(rest));
    } else if (word == "shows") {
      terminal_->shows_text(unescape(rest));
    } else if (word == "size") {
      terminal_->resize(first, second);
    } else if (word == "row") {
      const std::string wanted = split_word(rest).second;
      const auto fits = [&](const Shown& now) {
        return (first < 0 ? now.rows.back() : now.row(first)) == wanted;
      };
      terminal_->wait_until(fits, "  |" + wanted + "\n");
    } else if (word == "cursor") {
      const auto fits = [&](const Shown& now) {
        return now.cursor_row == first && now.cursor_column == second;
      };
      terminal_->wait_until(fits, "  cursor " + rest + "\n");
    } else if (word == "picture") {
      std::istringstream block(transcript_.block(next_));
      Shown wanted;
      for (std::string row; std::getline(block, row);) wanted.rows.push_back(row);
      terminal_->wait_until([&](const Shown& now) { return now.rows == wanted.rows; }, wanted.to_string());
    } else if (word == "exit") {
      EXPECT_EQ(terminal_->exit_status(), first);
    } else if (word == "sent") {
      EXPECT_EQ(terminal_->times_sent(unescape(split_word(rest).second)), static_cast<std::size_t>(first));
    } else if (word == "file") {
      EXPECT_EQ(terminal_->file(), unescape(rest));
    } else {
      ADD_FAILURE() << "not understood: " << word;
    }
  }

  const Transcript& transcript_;
  std::size_t next_ = 0;
  TerminalOptions options_;
  std::optional<TerminalDriver> terminal_;
};

class Screen : public testing::TestWithParam<Transcript> {};

TEST_P(Screen, Shows) { Visit(GetParam()).play(); }

INSTANTIATE_TEST_SUITE_P(All, Screen, testing::ValuesIn(read_transcripts("screen", ".screen")),
                         [](const auto& visit) { return visit.param.name; });

} // namespace
