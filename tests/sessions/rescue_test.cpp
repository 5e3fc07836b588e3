// What becomes of unsaved text when a signal, a lost terminal or a failure ends the program.
#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

#ifdef __APPLE__
#include <util.h>
#else
#include <pty.h>
#endif

#include <gtest/gtest.h>

#include "tests/sessions/run_program.h"

namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;

// A home with "work", where the program runs.
class Home {
 public:
  Home() {
    fs::create_directory(work());
    std::ofstream(work() + "/f") << "one\ntwo\n";
  }
  std::string work() const { return directory_.path() + "/work"; }
  const std::string& path() const { return directory_.path(); }

  void prepare(const std::string& script) const {
    const RunResult result = run_program("/bin/sh", {"-ec", script}, {{"PATH", "/usr/bin:/bin"}}, path(), "");
    ASSERT_EQ(result.status, 0) << script << result.errors;
  }

  // What is called ".save" in any way, by its path from home. The program's copies are their owner's alone.
  Files copies() const {
    Files found;
    for (const auto& entry : fs::recursive_directory_iterator(path())) {
      const std::string name = entry.path().string().substr(path().size() + 1);
      if (name.find(".save") == std::string::npos) continue;
      found[name] = entry.is_symlink() ? "a link\n" : read_whole_file(entry.path().string());
      const bool is_copy = entry.symlink_status().permissions() == fs::perms(0600);
      EXPECT_TRUE(is_copy || entry.is_symlink() || found[name] == "old\n") << name;
    }
    return found;
  }

 private:
  TemporaryDirectory directory_;
};

// The program with pipes or, to be torn off, on a terminal. All ends when the test's alarm goes off; what the
// program has started ends with this object.
class Running {
 public:
  enum class On { pipes, terminal, terminal_under_nohup };

  Running(const Home& home, On on, std::vector<std::string> arguments) {
    alarm(60);
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (on != On::pipes) {
      child_ = forkpty(&input_, nullptr, nullptr, nullptr);
      output_ = input_;
    } else if (pipe(in.data()) == 0 && pipe(out.data()) == 0) {
      input_ = in[1];
      output_ = out[0];
      child_ = fork();
    }
    if (child_ != 0) {
      for (const int end : {in[0], out[1]})
        if (on == On::pipes) close(end);
      tcgetattr(input_, &modes_);
      return;
    }
    if (on == On::pipes) {
      setsid();
      dup2(in[0], STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      for (const int end : {in[0], in[1], out[0], out[1]}) close(end);
    }
    std::signal(SIGHUP, on == On::terminal_under_nohup ? SIG_IGN : SIG_DFL);
    become(home, arguments);
  }
  ~Running() {
    if (child_ > 0) kill(-child_, SIGKILL);
    if (child_ > 0 && !ended_) waitpid(child_, nullptr, 0);
    hang_up();
    alarm(0);
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  void type(const std::string& keys) const {
    ASSERT_EQ(write(input_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  void expect(const std::string& text) {
    while (seen_.find(text) == std::string::npos) ASSERT_TRUE(read_some()) << text << "\nnot in\n" << seen_;
    seen_.erase(0, seen_.find(text) + text.size());
  }

  void send(int signal) const { kill(child_, signal); }
  void hang_up() {
    if (output_ >= 0 && output_ != input_) close(output_);
    if (input_ >= 0) close(input_);
    input_ = output_ = -1;
  }

  int status() { // at the end: the exit status, or 128 and the signal
    int result = 0;
    waitpid(child_, &result, 0);
    ended_ = true;
    return WIFSIGNALED(result) ? 128 + WTERMSIG(result) : WEXITSTATUS(result);
  }
  bool has_ended() {
    int result = 0;
    return ended_ = waitpid(child_, &result, WNOHANG) == child_;
  }
  std::string rest() { // of the output, after the end
    while (read_some()) {}
    return seen_;
  }
  bool has_its_modes() const {
    termios now{};
    return tcgetattr(input_, &now) == 0 && now.c_lflag == modes_.c_lflag && now.c_iflag == modes_.c_iflag;
  }

 private:
  [[noreturn]] static void become(const Home& home, std::vector<std::string>& arguments) {
    std::string program = ZAN_PROGRAM;
    std::vector<char*> words{program.data()};
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    setenv("HOME", home.path().c_str(), 1);
    setenv("TERM", "xterm", 1);
    setenv("PATH", (home.path() + ":/usr/bin:/bin").c_str(), 1);
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    if (chdir(home.work().c_str()) == 0) execv(program.c_str(), words.data());
    _exit(127);
  }

  bool read_some() {
    std::array<char, 4096> bytes{};
    const ssize_t count = read(output_, bytes.data(), bytes.size());
    if (count > 0) seen_.append(bytes.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  pid_t child_ = -1;
  int input_ = -1;
  int output_ = -1;
  termios modes_{};
  bool ended_ = false;
  std::string seen_;
};

const std::string kChange = "SUBSTITUTE/one/1/\n";

std::string changed(std::string text) {
  if (const std::size_t at = text.find("one"); at != std::string::npos) text.replace(at, 3, "1");
  return text;
}

// Where the program is when the signal comes: something was typed, and an answer has been seen.
struct Place {
  const char* name;
  const char* typed;
  const char* seen;
  std::string prepared = ":"; // by a script
  const char* added = "\n";   // by what is typed, in place of the last line feed
};

const std::string kCommands = "for i in `seq 5000`; do echo FIND two; done >>commands";
const std::string kLarge = "yes three | head -c 1000002 >>f || :";
const std::string kLong = "head -c 20000000 /dev/zero | tr '\\0' a | fold -w 20000 >>f; echo >>f";

const Place kPlaces[] = {
    {"prompt", "TYPE 2\n", "[EOB]\n*"},
    {"half a command", "TYPE 2\nTYP", "[EOB]\n*"},
    {"inserted lines", "BOTTOM\nINSERT\n!\n?\n", "__", ":", "!\n?\n"},
    {"question", "SUBSTITUTE/two/2/ /QUERY\n", "[Y/N]: "},
    {"output that nobody reads", "TYPE WHOLE\n", "2 two\n", kLarge},
    {"search", "TYPE 2\nFIND ????????????????????????????????????????????????[b]\n", "2 two\n*", kLong},
    {"command file", "SET COMMAND commands\n", "2 two\n", "echo TYPE 2 >commands; " + kCommands},
    {"macro", "DEFINE MACRO M AS TYPE\nFIND =M\nINCLUDE commands\nFIND =MAIN\nM\n", "2 two\n",
     "echo TYPE 2 >commands; " + kCommands},
    {"spooler", "PRINT\n", "printing\n",
     "mkfifo fifo; printf '#!/bin/sh\necho printing\nread line <fifo\n' >../lpr; chmod 755 ../lpr"},
};

void expect_rescue_at(const Place& place, int signal, bool modified) {
  SCOPED_TRACE(std::string(place.name) + " " + std::to_string(signal) + (modified ? " modified" : ""));
  const Home home;
  home.prepare(place.prepared);
  const std::string before = read_whole_file(home.work() + "/f");
  Running zan(home, Running::On::pipes, {"f"});
  zan.expect("*");
  if (modified) {
    zan.type(kChange);
    zan.expect("1 1\n*");
  }
  zan.type(place.typed);
  zan.expect(place.seen);
  zan.send(signal);
  EXPECT_EQ(zan.status(), 128 + signal);

  std::string text = modified ? changed(before) : before;
  text.replace(text.size() - 1, 1, place.added);
  EXPECT_TRUE(home.copies() == (text == before ? Files{} : Files{{"work/f.save", text}}));
  EXPECT_TRUE(read_whole_file(home.work() + "/f") == before);
  EXPECT_TRUE(fs::exists(home.work() + "/f.jou"));
}

TEST(Rescue, OfASignalAtEachPlace) {
  for (const Place& place : kPlaces) {
    for (const int signal : {SIGTERM, SIGHUP}) {
      for (const bool modified : {true, false}) expect_rescue_at(place, signal, modified);
    }
  }
}

// What is rescued, and where: at a SIGTERM after the last command.
const struct {
  const char* name;
  const char* prepared;
  const char* typed;
  Files copies;
  std::vector<std::string> arguments = {"f"};
} kTexts[] = {
    {"names that are taken",
     "echo old >f.save; ln -s nowhere f.save.1; ln -s f f.save.2",
     "SUBSTITUTE/one/1/\n",
     {{"work/f.save", "old\n"},
      {"work/f.save.1", "a link\n"},
      {"work/f.save.2", "a link\n"},
      {"work/f.save.3", "1\ntwo\n"}}},
    {"a journal elsewhere",
     "mkdir d",
     "SUBSTITUTE/one/1/\n",
     {{"work/d/f.save", "1\ntwo\n"}},
     {"../work/f", "-journal=d/j"}},
    {"no place beside the journal",
     ":",
     "SUBSTITUTE/one/1/\n",
     {{"f.save", "1\ntwo\n"}},
     {"f", "-journal=d/j"}},
    {"a name too long",
     ":",
     "DELETE\nINSERT x\n",
     {{"work/" + std::string(240, 'n') + ".save", "x\n"}},
     {std::string(250, 'n')}},
    {"fixed records", ":", "SET RMS FIXED 9\nSUBSTITUTE/one/1/\n", {{"work/f.save", "1\ntwo\n"}}},
    {"an empty text", ":", "DELETE WHOLE\n", {{"work/f.save", ""}}},
    {"buffers",
     ":",
     "DEFINE MACRO M AS \"TYPE\"\nFIND =A/B\nINSERT a\nFIND =M\nINSERT m\nFIND =C\nINSERT c\nFIND "
     "=PASTE\nINSERT p\n"
     "FIND =A/B\nINSERT b\n",
     {{"work/f.A_B.save", "ba\n"}, {"work/f.C.save", "c\n"}}},
    {"another buffer's being current", ":", "SUBSTITUTE/one/1/\nFIND =A\n", {{"work/f.save", "1\ntwo\n"}}},
    {"what was saved", ":", "SUBSTITUTE/one/1/ /SAVE\n", {}},
    {"what was taken back", ":", "SUBSTITUTE/one/1/\nUNDO\n", {}},
    {"a copy", ":", "SUBSTITUTE/one/1/\nWRITE g\n", {{"work/f.save", "1\ntwo\n"}}},
};

TEST(Rescue, OfEachText) {
  umask(0);
  for (const auto& row : kTexts) {
    SCOPED_TRACE(row.name);
    const Home home;
    home.prepare(row.prepared);
    Running zan(home, Running::On::pipes, row.arguments);
    zan.type(row.typed + std::string("SET PROMPT ready\n"));
    zan.expect("\nready");
    zan.send(SIGTERM);
    EXPECT_EQ(zan.status(), 128 + SIGTERM);
    EXPECT_EQ(zan.rest(), "");
    EXPECT_EQ(home.copies(), row.copies);
  }
  umask(022);
}

// A sanitizer keeps memory from being limited, and looks after crashes itself.
const std::string kLittleMemory = "ulimit -v 300000 && ";

bool is_sanitized() {
  const Home home;
  const std::string script = kLittleMemory + "exec \"$0\" -h";
  return run_program("/bin/sh", {"-c", script, ZAN_PROGRAM}, {}, home.path(), "").status != 0;
}

// Ends that are no signal.
const struct {
  const char* name;
  std::vector<std::string> arguments;
  std::string typed;
  int status;
  const char* errors;
  Files copies;
  std::string limit = "";
} kEnds[] = {
    {"end of input", {"f"}, kChange, 0, "", {}},
    {"QUIT", {"f"}, kChange + "QUIT\n", 0, "", {}},
    {"EXIT", {"f"}, kChange + "FIND =A\nINSERT a\nEXIT\n", 0, "", {}},
    {"EXIT that cannot write",
     {"f", "-output=no/g"},
     kChange + "FIND =A\nINSERT a\nEXIT\n",
     2,
     "?Unable to write no/g\n",
     {{"work/f.save", "1\ntwo\n"}, {"work/f.A.save", "a\n"}}},
    {"EXIT that cannot write, nothing modified",
     {"f", "-output=no/g"},
     "EXIT\n",
     2,
     "?Unable to write no/g\n",
     {}},
    {"no room for a copy either",
     {"f"},
     "INSERT " + std::string(9000, 'x') + "\nEXIT\n",
     2,
     "?Unable to write f\n",
     {},
     "ulimit -f 9 && "},
    {"no memory",
     {"f"},
     kChange + "INCLUDE /dev/zero\nEXIT\n",
     1,
     "fatal: std::bad_alloc\n",
     {{"work/f.save", "1\ntwo\n"}},
     kLittleMemory},
};

TEST(Rescue, OfOtherEnds) {
  const bool sanitized = is_sanitized();
  for (const auto& row : kEnds) {
    SCOPED_TRACE(row.name);
    if (sanitized && row.limit == kLittleMemory) continue;
    const Home home;
    std::vector<std::string> words{"-c", row.limit + "exec \"$0\" \"$@\"", ZAN_PROGRAM};
    words.insert(words.end(), row.arguments.begin(), row.arguments.end());
    const RunResult result =
        run_program("/bin/sh", words, {{"TERM", "xterm"}, {"HOME", home.path()}}, home.path(), row.typed);
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.errors, row.errors);
    EXPECT_EQ(home.copies(), row.copies);
  }
}

TEST(Rescue, OfATerminalThatGoesAway) {
  using On = Running::On;
  for (const On on : {On::terminal, On::terminal_under_nohup}) {
    for (const bool screen : {false, true}) {
      const Home home;
      Running zan(home, on, {"f"});
      zan.type(kChange);
      zan.expect("1 1");
      zan.type(screen ? "CHANGE\n" : "TYPE 2\n");
      zan.expect(screen ? "EDIT[MAIN]" : "2 two");
      zan.hang_up();
      EXPECT_EQ(zan.status(), on == On::terminal ? 128 + SIGHUP : 0);
      EXPECT_EQ(home.copies(), (Files{{"work/f.save", "1\ntwo\n"}}));
    }
  }
}

TEST(Rescue, IsNotForControlD) {
  const Home home;
  Running zan(home, Running::On::terminal, {"f"});
  zan.type(kChange);
  zan.expect("1 1");
  zan.type("\004");
  EXPECT_EQ(zan.status(), 0);
  EXPECT_EQ(home.copies(), Files{});
}

// Who sends it again has waited long enough, whatever holds the program up.
TEST(Rescue, EndsByAnotherSignal) {
  const Home home;
  home.prepare("mkfifo fifo");
  Running zan(home, Running::On::pipes, {"f"});
  zan.type("INCLUDE fifo\n");
  const int writer = open((home.work() + "/fifo").c_str(), O_WRONLY); // waits for the reader
  while (!zan.has_ended()) zan.send(SIGTERM);
  close(writer);
}

TEST(Crash, GivesTheTerminalBack) {
  const std::vector<int> signals =
      is_sanitized() ? std::vector{SIGQUIT} : std::vector{SIGQUIT, SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGILL};
  for (const int signal : signals) {
    SCOPED_TRACE(signal);
    const Home home;
    Running zan(home, Running::On::terminal, {"f"});
    zan.type("CHANGE\n");
    zan.expect("EDIT[MAIN]");
    EXPECT_FALSE(zan.has_its_modes());
    zan.send(signal);
    EXPECT_EQ(zan.status(), 128 + signal);
    EXPECT_TRUE(zan.has_its_modes());
    const std::string rest = zan.rest();
    EXPECT_NE(rest.find("\033[?1049l"), std::string::npos) << rest;
    EXPECT_TRUE(rest.ends_with("\033>")) << rest;
  }
}

} // namespace
