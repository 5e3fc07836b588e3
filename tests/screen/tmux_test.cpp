#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>

#include "tests/files/scratch_directory.h"

// Whole sessions inside tmux, a terminal that other people wrote: it knows keys by name, and sends those of
// the keypad only to a program that has asked for them.
namespace {

bool tmux_is_installed() { return std::system("command -v tmux >/dev/null 2>&1") == 0; }

class Tmux {
 public:
  explicit Tmux(const std::string& term) {
    zan::test::write_file(home_ / "notes.txt", "one\ntwo\nthree\n");
    run("new-session -d -x 70 -y 10 -c " + home_.path() + " 'env HOME=. TERM=" + term +
        " " ZAN_PROGRAM " notes.txt; echo status $?; cat'");
  }
  ~Tmux() { run("kill-server"); }
  Tmux(const Tmux&) = delete;
  Tmux& operator=(const Tmux&) = delete;

  void press(const std::string& keys) const { run("send-keys " + keys); }
  void resize(int rows, int columns) const {
    run("resize-window -x " + std::to_string(columns) + " -y " + std::to_string(rows));
  }
  // Waits, until a deadline, for a picture that begins with the rows (joined by line feeds) and holds the
  // text.
  void expect(const std::string& rows, const std::string& text) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::string picture;
    do {
      picture = capture();
      if (picture.starts_with(rows) && picture.find(text) != std::string::npos) return;
      poll(nullptr, 0, 10);
    } while (std::chrono::steady_clock::now() < deadline);
    ADD_FAILURE() << "wanted:\n" << rows << "\n... " << text << "\nshown:\n" << picture;
  }
  std::string file() const { return zan::test::read_file(home_ / "notes.txt"); }

 private:
  void run(const std::string& command) const {
    EXPECT_EQ(std::system((tmux_ + command).c_str()), 0) << command;
  }
  std::string capture() const {
    std::string picture;
    FILE* pipe = popen((tmux_ + "capture-pane -p").c_str(), "r");
    for (int c = 0; pipe != nullptr && (c = std::fgetc(pipe)) != EOF;) picture += static_cast<char>(c);
    if (pipe != nullptr) pclose(pipe);
    return picture;
  }

  zan::test::ScratchDirectory home_;
  std::string tmux_ = "env LC_ALL=C.UTF-8 tmux -S " + (home_ / "tmux") + " -f /dev/null ";
};

struct Step {
  const char* keys; // as tmux names them
  const char* rows;
  const char* text;
};

const Step kSession[] = {
    {"CHANGE Enter", "one\ntwo\nthree\n[EOB]\n", "EDIT[MAIN] ADVANCE  PF1"},
    {"Down KP. KP0", "one\ntwo\n", "SELECT"},
    {"KP6", "one\nthree\n[EOB]\n", "ADVANCE *"}, // cut
    {"F1 KP5 F1 KP6", "two\none\nthree\n[EOB]\n", "PASTE"},
    {"F1 F3 thr Enter", "two\none\nthree\n", "Found: thr"},
    {"C-k F1 k", "two\none\nthree\n", "Definition:"},
    {"'DEL L' Enter F1 k", "two\none\n[EOB]\n", "EDIT[MAIN]"},
    {"F1 F4", "two\nthree\none\n[EOB]\n", "UND L"},
    {"F2", "V1.05-0  ZAN keypad editor - screen help\n", "GOLD = PF1"},
    {"Space", "two\nthree\none\n[EOB]\n", "EDIT[MAIN]"},
    {"F1 KP7 UNDO Enter", "two\none\n[EOB]\n", "UNDO"},
    {"End Home DC x", "two\nxne\n[EOB]\n", "EDIT[MAIN]"},
    {"C-z 'TYPE WHOLE' Enter", "", "2 xne"},
    {"CHANGE Enter", "two\nxne\n[EOB]\n", "EDIT[MAIN]"},
};

} // namespace

class TmuxSession : public testing::TestWithParam<const char*> {};

TEST_P(TmuxSession, FromOpenToExit) {
  if (!tmux_is_installed()) GTEST_SKIP() << "tmux is not installed";
  const Tmux tmux(GetParam());
  tmux.expect("$ EDIT/ZAN", "1 one\n*");
  for (const auto& [keys, rows, text] : kSession) {
    SCOPED_TRACE(keys);
    tmux.press(keys);
    tmux.expect(rows, text);
    if (HasFailure()) return;
  }
  tmux.resize(16, 40);
  tmux.expect("two\nxne\n[EOB]\n", std::string(40, '-') + "\n EDIT[MAIN] ADVANCE *  PF1=GOLD PF3=FNDN\n");
  tmux.press("C-z EXIT Enter");
  tmux.expect("", "notes.txt 2 lines\nstatus 0");
  EXPECT_EQ(tmux.file(), "two\nxne\n");
}

INSTANTIATE_TEST_SUITE_P(All, TmuxSession, testing::Values("xterm-256color", "vt100", "tmux-256color"));
