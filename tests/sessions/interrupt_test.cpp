// Ctrl/C typed at a real terminal while a long command runs.
#include <csignal>
#include <cstdio>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __APPLE__
#include <util.h>
#else
#include <pty.h>
#endif

#include <gtest/gtest.h>

#include "tests/sessions/run_program.h"

namespace {

// The program on a terminal of its own. Everything ends when the test's alarm goes off.
class OnTerminal {
 public:
  explicit OnTerminal(const std::string& file) {
    alarm(60);
    child_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (child_ != 0) return;
    setenv("TERM", "xterm", 1);
    setenv("HOME", "/nonexistent", 1);
    execl(ZAN_PROGRAM, "zan", file.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  ~OnTerminal() {
    close(terminal_);
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
    alarm(0);
  }
  OnTerminal(const OnTerminal&) = delete;
  OnTerminal& operator=(const OnTerminal&) = delete;

  void type(const std::string& keys) {
    ASSERT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  // Reads until `text` has come; what was read is gone.
  void expect(const std::string& text) {
    while (seen_.find(text) == std::string::npos) {
      char bytes[4096];
      const ssize_t count = read(terminal_, bytes, sizeof bytes);
      ASSERT_GT(count, 0) << "no \"" << text << "\" in what came last:\n" << seen_;
      seen_.append(bytes, static_cast<std::size_t>(count));
      if (seen_.size() > 100000) seen_.erase(0, 50000);
    }
    seen_.erase(0, seen_.find(text) + text.size());
  }

  // Waits until the program catches Ctrl/C, as it does only while a long command runs.
  void expect_guarded() const {
    for (;;) {
      std::ifstream status("/proc/" + std::to_string(child_) + "/status");
      std::string name;
      while (status >> name && name != "SigCgt:") {}
      unsigned long long caught = 0;
      ASSERT_TRUE(status >> std::hex >> caught);
      if ((caught >> (SIGINT - 1) & 1) != 0) return;
    }
  }

  int status() {
    int result = 0;
    waitpid(child_, &result, 0);
    return result;
  }

 private:
  int terminal_ = -1;
  pid_t child_ = -1;
  std::string seen_;
};

std::string file_of_lines(const TemporaryDirectory& directory, int count, const std::string& line) {
  const std::string path = directory.path() + "/long.txt";
  std::ofstream out(path);
  for (int i = 0; i < count; ++i) out << line << '\n';
  return path;
}

} // namespace

TEST(Interrupt, StopsTypingAndTheNextCommandRuns) {
  const TemporaryDirectory directory;
  OnTerminal zan(file_of_lines(directory, 500000, std::string(60, 'x')));
  zan.expect("*");
  zan.type("TYPE WHOLE\n");
  zan.expect("\n1000 xxx");
  zan.type("\x03");
  zan.expect("*Abort*\r\n*");
  zan.type("FIND x\n");
  zan.expect("1 xxx");
  zan.type("QUIT\n");
  EXPECT_EQ(zan.status(), 0);
}

TEST(Interrupt, StopsASearchAndAnUnguardedProgramEnds) {
#ifndef __linux__
  GTEST_SKIP() << "cannot tell when the command has begun";
#endif
  const TemporaryDirectory directory;
  OnTerminal zan(file_of_lines(directory, 3000, std::string(20000, 'a')));
  zan.expect("*");
  zan.type("FIND " + std::string(500, '?') + "[b]\n");
  zan.expect_guarded();
  zan.type("\x03");
  zan.expect("*Abort*\r\n*");
  zan.type("TYPE/BRIEF:1\n");
  zan.expect("1 a\r\n*");
  zan.type("\x03");
  EXPECT_TRUE(WIFSIGNALED(zan.status()));
}
