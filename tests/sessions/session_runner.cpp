// Plays the transcripts beside this file, *.session. A transcript is what a user would see on paper: what the
// program writes and what is typed, in one text.
//
//   # A line that begins with # outside a transcript is a comment.
//   == DELETE of one line          a session; its name, once per file, names the test
//   file notes.txt                 a file; its lines follow, each with a | before it
//   |one
//   |two
//   run notes.txt                  starts the program; then the transcript, to the line "status"
//   $ EDIT/ZAN notes.txt           output
//   1 one
//   *DELETE 2                      a line that begins with * is a prompt and what is typed at it
//   *SUBSTITUTE/one/1/ /QUERY
//   1 one
//   Substitute? [Y/N]: <<y         << stands between a prompt and what is typed (which may be empty);
//   *<EOF>                         <EOF> for output that lacks its line feed, such as the last prompt
//   status 0                       exit status, or 128 and a signal's number; after it comes what is left:
//   stderr                         standard error, lines as in a file; without it there must be none
//   |?Some message
//   file notes.txt                 exactly this text
//   nofile notes.txt.jou           nothing of that name
//
// Bytes: a line that begins with " holds output in double quotes with the escapes \n \r \t \0 \" \\ \x1b, and
// no line feed of its own: "*Abort*\n". What follows << may be quoted the same way: *<<"EXIT" lacks a line
// feed. Further lines, before "run" to set up, after "status" to check:
//   bytes NAME "one\r\n\0"     a file's exact bytes
//   sh COMMAND                 a command of the shell, which must succeed
// Only to set up: env NAME=VALUE. "then" goes back to setting up, for another run in the same place. Words of
// run may be quoted. {DIR} stands for the directory that the session runs in, anywhere. The program starts
// with TERM=xterm, HOME={DIR}, PATH, TZ=UTC and its own number as PID in its environment, and gets all input
// at once.

#include <gtest/gtest.h>

#include "tests/sessions/run_program.h"
#include "tests/sessions/text_forms.h"

namespace {

namespace fs = std::filesystem;

// One session as it is played: walks its lines once, acting on each.
class Player {
 public:
  explicit Player(const Transcript& session) : session_(session) {
    fs::create_directory(directory());
    environment_ = {{"TERM", "xterm"}, {"HOME", directory()}, {"PATH", "/usr/bin:/bin"}, {"TZ", "UTC"}};
  }

  void play() {
    while (next_ < session_.lines.size()) directive();
  }

 private:
  std::string directory() const { return home_ / "work"; }
  std::string path(const std::string& name) const { return directory() + "/" + name; }

  std::string filled_in(std::string text) const {
    for (std::size_t at = 0; (at = text.find("{DIR}", at)) != std::string::npos; at += directory().size())
      text.replace(at, 5, directory());
    return text;
  }

  std::string take() { return filled_in(session_.lines[next_++].text); }
  std::string take_block() { return filled_in(session_.block(next_)); }

  void directive() {
    SCOPED_TRACE(session_.lines[next_].place);
    const std::string line = take();
    if (line.empty() || line.starts_with('#')) return;
    const auto [word, rest] = split_word(line);
    const auto [name, value] = split_word(rest);
    const auto equals = rest.find('=');
    if (word == "run") {
      run(rest);
    } else if (word == "file") {
      content(name, take_block());
    } else if (word == "bytes") {
      content(name, unescape(std::string_view(value).substr(1)));
    } else if (word == "sh") {
      const RunResult done = run_program("/bin/sh", {"-ec", rest}, environment_, home_.path(), "");
      EXPECT_EQ(done.status, 0) << done.output << done.errors;
    } else if (word == "nofile") {
      EXPECT_FALSE(fs::exists(fs::symlink_status(path(name)))) << name << " exists";
    } else if (word == "then") {
      checking_ = false;
    } else if (word == "env" && equals != std::string::npos) {
      environment_[rest.substr(0, equals)] = rest.substr(equals + 1);
    } else {
      ADD_FAILURE() << "not understood: " << word;
    }
  }

  void content(const std::string& name, const std::string& bytes) {
    if (!checking_) return zan::test::write_file(path(name), bytes);
    EXPECT_TRUE(fs::is_regular_file(path(name))) << name << " is no file";
    EXPECT_EQ(zan::test::read_file(path(name)), bytes) << name;
  }

  void run(const std::string& arguments) {
    std::string input;
    std::string expected;
    std::string status;
    while (status.empty() && next_ < session_.lines.size()) {
      const std::string text = take();
      if (text.starts_with("status ")) {
        status = text.substr(7);
      } else {
        transcript_line(text, input, expected);
      }
    }
    std::string errors;
    if (next_ < session_.lines.size() && session_.lines[next_].text == "stderr") {
      take();
      errors = take_block();
    }
    const RunResult result =
        run_program(ZAN_PROGRAM, split_arguments(arguments), environment_, home_.path(), input);
    EXPECT_FALSE(result.timed_out) << "ran too long";
    EXPECT_EQ(result.output, expected);
    EXPECT_EQ(std::to_string(result.status), status);
    EXPECT_EQ(result.errors, errors);
    checking_ = true;
  }

  // Adds what the line says is typed and written.
  static void transcript_line(const std::string& line, std::string& input, std::string& expected) {
    std::size_t used = 0;
    const bool quoted = line.starts_with('"');
    if (quoted) {
      expected += unescape(std::string_view(line).substr(1), &used);
      used += 2;
    }
    const auto typed = line.find("<<", used);
    if (typed != std::string::npos) {
      if (!quoted) expected += line.substr(0, typed);
      const std::string text = line.substr(typed + 2);
      input += text.starts_with('"') ? unescape(std::string_view(text).substr(1)) : text + '\n';
    } else if (!quoted && line.ends_with("<EOF>")) {
      expected += line.substr(0, line.size() - 5);
    } else if (line.starts_with('*')) {
      expected += '*';
      input += line.substr(1) + '\n';
    } else if (!quoted) {
      expected += line + '\n';
    }
  }

  const Transcript& session_;
  std::size_t next_ = 0;
  zan::test::ScratchDirectory home_;
  std::map<std::string, std::string> environment_;
  bool checking_ = false; // after a run
};

class Session : public testing::TestWithParam<Transcript> {};

TEST_P(Session, Plays) { Player(GetParam()).play(); }

INSTANTIATE_TEST_SUITE_P(All, Session, testing::ValuesIn(read_transcripts("sessions", ".session")),
                         [](const auto& session) { return session.param.name; });

} // namespace
