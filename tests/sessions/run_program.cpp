#include "tests/sessions/run_program.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>

namespace {

constexpr unsigned kLifetime = 30; // seconds

// The strings as exec wants them; they must outlive the result.
std::vector<char*> as_pointers(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (auto& text : strings) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool redirect(const std::string& path, int descriptor) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  return file >= 0 && dup2(file, descriptor) >= 0 && close(file) == 0;
}

[[noreturn]] void become(std::vector<std::string>& words, std::vector<std::string>& settings,
                         const std::string& home, int input) {
  settings.push_back("PID=" + std::to_string(getpid()));
  const bool ready = dup2(input, STDIN_FILENO) >= 0 && close(input) == 0 &&
                     redirect(home + "/stdout", STDOUT_FILENO) && redirect(home + "/stderr", STDERR_FILENO) &&
                     chdir((home + "/work").c_str()) == 0;
  for (const int signal : {SIGPIPE, SIGHUP, SIGINT, SIGQUIT}) std::signal(signal, SIG_DFL);
  alarm(kLifetime); // outlives exec: the program cannot hang, so nobody needs to watch the clock
  if (ready) execve(words[0].c_str(), as_pointers(words).data(), as_pointers(settings).data());
  _exit(127);
}

// The reader may end before it has taken everything; then the rest is nobody's.
void feed(int descriptor, std::string_view input) {
  while (!input.empty()) {
    const ssize_t count = write(descriptor, input.data(), input.size());
    if (count <= 0) break;
    input.remove_prefix(static_cast<std::size_t>(count));
  }
  close(descriptor);
}

} // namespace

RunResult run_program(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment, const std::string& home,
                      std::string_view input) {
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> settings;
  for (const auto& [name, value] : environment) settings.push_back(name + "=" + value);

  std::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  fcntl(ends[1], F_SETFD, FD_CLOEXEC);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) become(words, settings, home, ends[0]);
  close(ends[0]);
  feed(ends[1], input);

  int state = 0;
  waitpid(child, &state, 0);
  return {WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state),
          WIFSIGNALED(state) && WTERMSIG(state) == SIGALRM, zan::test::read_file(home + "/stdout"),
          zan::test::read_file(home + "/stderr")};
}
