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
//   bytes NAME "one\r\n\0"     a file's exact bytes     mode NAME 0644     its permissions
//   symlink NAME TARGET        a symbolic link          mkdir NAME         a directory
// Only to set up: env NAME=VALUE, unset NAME. "then" goes back to setting up, for another run in the same
// place. Words of run may be quoted. {DIR} stands for the directory that the session runs in, anywhere. The
// program starts with TERM=xterm, HOME={DIR}, PATH and TZ=UTC in its environment, and gets all input at once.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/sessions/run_program.h"
#include "tests/sessions/text_forms.h"

namespace {

namespace fs = std::filesystem;

struct Line {
  int number = 0;
  std::string text;
};

struct Session {
  std::string place; // file:line
  std::string file;
  std::string name;
  std::vector<Line> lines;
};

void PrintTo(const Session& session, std::ostream* out) { *out << session.place; }

std::pair<std::string, std::string> split_word(const std::string& text) {
  const auto space = text.find(' ');
  if (space == std::string::npos) return {text, ""};
  return {text.substr(0, space), text.substr(space + 1)};
}

// One session as it is played: walks its lines once, acting on each.
class Player {
 public:
  explicit Player(const Session& session) : session_(session) {
    fs::create_directory(directory());
    environment_ = {{"TERM", "xterm"}, {"HOME", directory()}, {"PATH", "/usr/bin:/bin"}, {"TZ", "UTC"}};
  }

  void play() {
    while (next_ < session_.lines.size()) directive(take());
  }

 private:
  std::string directory() const { return home_.path() + "/work"; }
  fs::path path(const std::string& name) const { return fs::path(directory()) / name; }
  std::string place(int number) const { return session_.file + ":" + std::to_string(number); }

  Line take() {
    Line line = session_.lines[next_++];
    for (std::size_t at = 0; (at = line.text.find("{DIR}", at)) != std::string::npos;
         at += directory().size()) {
      line.text.replace(at, 5, directory());
    }
    return line;
  }

  std::string take_block() {
    std::string text;
    while (next_ < session_.lines.size() && session_.lines[next_].text.starts_with('|')) {
      text += take().text.substr(1) + '\n';
    }
    return text;
  }

  void directive(const Line& line) {
    SCOPED_TRACE(place(line.number));
    if (line.text.empty() || line.text.starts_with('#')) return;
    const auto [word, rest] = split_word(line.text);
    const auto [name, value] = split_word(rest);
    if (word == "run") return run(rest);
    if (word == "file") return content(name, take_block());
    if (word == "bytes") return content(name, unescape(std::string_view(value).substr(1)));
    if (word == "mode") return mode(name, std::stoi(value, nullptr, 8));
    if (word == "symlink") return symlink(name, value);
    if (word == "mkdir") return make_directory(name);
    if (checking_) return check(word, name);
    set_up(word, rest);
  }

  void check(const std::string& word, const std::string& name) {
    if (word == "then") {
      checking_ = false;
    } else if (word == "stderr") {
      const std::string expected = take_block();
      if (expected != errors_) ADD_FAILURE() << "standard error differs:" << difference(expected, errors_);
    } else if (word == "nofile") {
      EXPECT_FALSE(fs::exists(fs::symlink_status(path(name)))) << name << " exists";
    } else {
      ADD_FAILURE() << "not understood after a run: " << word;
    }
  }

  void set_up(const std::string& word, const std::string& rest) {
    const auto equals = rest.find('=');
    if (word == "env" && equals != std::string::npos) {
      environment_[rest.substr(0, equals)] = rest.substr(equals + 1);
    } else if (word == "unset") {
      environment_.erase(rest);
    } else {
      ADD_FAILURE() << "not understood before a run: " << word;
    }
  }

  void content(const std::string& name, const std::string& bytes) {
    if (!checking_) {
      std::ofstream(path(name), std::ios::binary) << bytes;
      return;
    }
    EXPECT_TRUE(fs::is_regular_file(path(name))) << name << " is no file";
    const std::string actual = read_whole_file(path(name).string());
    if (actual != bytes) ADD_FAILURE() << name << " differs:" << difference(bytes, actual);
  }

  void mode(const std::string& name, int bits) {
    if (!checking_) return fs::permissions(path(name), static_cast<fs::perms>(bits));
    EXPECT_EQ(static_cast<int>(fs::status(path(name)).permissions()), bits) << name;
  }

  void symlink(const std::string& name, const std::string& target) {
    if (!checking_) return fs::create_symlink(target, path(name));
    ASSERT_TRUE(fs::is_symlink(path(name))) << name;
    EXPECT_EQ(fs::read_symlink(path(name)).string(), target) << name;
  }

  void make_directory(const std::string& name) {
    if (!checking_) {
      fs::create_directories(path(name));
    } else {
      EXPECT_TRUE(fs::is_directory(path(name))) << name;
    }
  }

  void run(const std::string& arguments) {
    std::string input;
    std::string expected;
    std::vector<std::pair<std::size_t, int>> starts; // where in `expected` each line of the transcript begins
    std::optional<int> status;
    while (!status && next_ < session_.lines.size()) {
      const Line line = take();
      starts.emplace_back(expected.size(), line.number);
      if (line.text.starts_with("status ")) {
        status = std::stoi(line.text.substr(7));
      } else {
        transcript_line(line.text, input, expected);
      }
    }
    ASSERT_TRUE(status) << "the transcript has no \"status\" line";

    const RunResult result =
        run_program(ZAN_PROGRAM, split_arguments(arguments), environment_, home_.path(), input);
    EXPECT_FALSE(result.timed_out) << "ran too long";
    if (result.output != expected) report(expected, result.output, starts);
    EXPECT_EQ(result.status, *status);
    errors_ = result.errors;
    checking_ = true;
    const bool tested = next_ < session_.lines.size() && session_.lines[next_].text == "stderr";
    if (!tested && !errors_.empty()) ADD_FAILURE() << "standard error:" << difference("", errors_);
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

  void report(const std::string& expected, const std::string& actual,
              const std::vector<std::pair<std::size_t, int>>& starts) const {
    const auto ends = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    const auto offset = static_cast<std::size_t>(ends.first - expected.begin());
    const auto after = std::ranges::find_if(starts, [&](const auto& start) { return start.first > offset; });
    ADD_FAILURE() << "output differs at " << place(std::prev(after)->second) << ":"
                  << difference(expected, actual);
  }

  const Session& session_;
  std::size_t next_ = 0;
  TemporaryDirectory home_;
  std::map<std::string, std::string> environment_;
  bool checking_ = false; // after a run
  std::string errors_;    // of the last run
};

void read_sessions(const fs::path& path, std::vector<Session>& sessions) {
  std::ifstream file(path, std::ios::binary);
  int number = 0;
  for (std::string text; std::getline(file, text);) {
    ++number;
    if (text.starts_with("== ")) {
      const std::string name = path.filename().string();
      sessions.push_back(
          {name + ":" + std::to_string(number), name, path.stem().string() + "_" + text.substr(3), {}});
    } else if (!sessions.empty()) {
      sessions.back().lines.push_back({number, text});
    }
  }
}

std::vector<Session> all_sessions() {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(ZAN_SESSIONS)) {
    if (entry.path().extension() == ".session") paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  std::vector<Session> sessions;
  for (const auto& path : paths) read_sessions(path, sessions);
  return sessions;
}

// GoogleTest wants letters, digits and underscores.
std::string test_name(const testing::TestParamInfo<Session>& info) {
  std::string name;
  for (const char c : info.param.name) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0;
    if (plain || !name.ends_with('_')) name += plain ? c : '_';
  }
  if (name.ends_with('_')) name.pop_back();
  return name;
}

class Transcript : public testing::TestWithParam<Session> {};

TEST_P(Transcript, Plays) { Player(GetParam()).play(); }

INSTANTIATE_TEST_SUITE_P(Session, Transcript, testing::ValuesIn(all_sessions()), test_name);

} // namespace
