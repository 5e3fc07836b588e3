#include "tests/screen/terminal_driver.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <locale.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#ifdef __APPLE__
#include <util.h>
#include <xlocale.h>
#else
#include <pty.h>
#endif

#include "tests/screen/key_names.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kDeadline{30};
constexpr std::chrono::milliseconds kSoon{300};

winsize size_of(int rows, int columns) {
  winsize size{};
  size.ws_row = static_cast<unsigned short>(rows);
  size.ws_col = static_cast<unsigned short>(columns);
  return size;
}

void append_utf8(std::string& text, uint32_t c) {
  if (c < 0x80) text += static_cast<char>(c);
  else if (c < 0x800) text += {static_cast<char>(0xc0 | c >> 6), static_cast<char>(0x80 | (c & 0x3f))};
  else
    text += {static_cast<char>(0xe0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3f)),
             static_cast<char>(0x80 | (c & 0x3f))};
}

std::string row_text(VTermScreen* screen, int row, int columns) {
  std::string text;
  bool reverse = false;
  for (int column = 0; column < columns; ++column) {
    VTermScreenCell cell;
    vterm_screen_get_cell(screen, {row, column}, &cell);
    if ((cell.attrs.reverse != 0) != reverse) text += reverse ? '}' : '{';
    reverse = cell.attrs.reverse != 0;
    const bool second_half = cell.chars[0] == static_cast<std::uint32_t>(-1); // of a wide character
    if (!second_half) append_utf8(text, cell.chars[0] == 0 ? ' ' : cell.chars[0]);
  }
  if (reverse) text += '}';
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// Makes the caller the foreground job of what stays behind as its shell: that stops and goes on with it, and
// ends with its status. Only the first stop is passed on. A program without a shell is never stopped, because
// nobody could let it go on.
void become_job() {
  std::signal(SIGTTOU, SIG_IGN);
  const pid_t job = fork();
  setpgid(job, job);
  if (job == 0) {
    tcsetpgrp(STDIN_FILENO, getpid());
    std::signal(SIGTTOU, SIG_DFL);
    return;
  }
  int status = 0;
  bool passed_on = false;
  while (waitpid(job, &status, WUNTRACED) == job && WIFSTOPPED(status)) {
    if (!std::exchange(passed_on, true)) raise(SIGSTOP);
    kill(job, SIGCONT);
  }
  _exit(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

// The first that the system has.
std::string utf8_locale() {
  for (const char* name : {"C.UTF-8", "en_US.UTF-8"}) {
    const locale_t found = newlocale(LC_ALL_MASK, name, nullptr);
    if (found == nullptr) continue;
    freelocale(found);
    return name;
  }
  return "C";
}

[[noreturn]] void execute(const std::string& home, const TerminalOptions& options) {
  // The screen library keeps what it had begun for a terminal that it could not start: no leak of the
  // program. Signals of a crash are the program's.
  std::vector<std::string> variables{
      "HOME=" + home, "PATH=" + home + ":/usr/bin:/bin", "LC_ALL=" + utf8_locale(),
      "ASAN_OPTIONS=detect_leaks=0:handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0"};
  if (options.term) variables.push_back("TERM=" + *options.term);
  std::vector<std::string> arguments{"zan", "notes.txt"};
  arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
  const auto pointers = [](std::vector<std::string>& texts) {
    std::vector<char*> to;
    for (std::string& text : texts) to.push_back(text.data());
    to.push_back(nullptr);
    return to;
  };
  if (chdir(home.c_str()) == 0) execve(ZAN_PROGRAM, pointers(arguments).data(), pointers(variables).data());
  _exit(127);
}

double seconds(const timeval& time) { return double(time.tv_sec) + 1e-6 * double(time.tv_usec); }

} // namespace

std::string Shown::to_string() const {
  std::string text;
  for (const std::string& line : rows) text += "  |" + line + "\n";
  return text + "  cursor " + std::to_string(cursor_row) + " " + std::to_string(cursor_column) + "\n";
}

TerminalDriver::TerminalDriver(const TerminalOptions& options)
    : home_(options.home), terminal_(vterm_new(options.rows, options.columns)) {
  vterm_set_utf8(terminal_, 1);
  VTermScreen* screen = vterm_obtain_screen(terminal_);
  vterm_screen_enable_altscreen(screen, 1);
  vterm_screen_reset(screen, 1);
  if (!home_) {
    home_ = std::make_shared<zan::test::ScratchDirectory>();
    zan::test::write_file(home() / "notes.txt", options.text);
    zan::test::write_file(home() / "zan.ini", options.startup);
    if (!options.spooler.empty()) {
      zan::test::write_file(home() / "lpr", "#!/bin/sh\n" + options.spooler);
      chmod((home() / "lpr").c_str(), 0700);
    }
  }
  winsize size = size_of(options.rows, options.columns);
  child_ = forkpty(&master_, nullptr, nullptr, &size);
  if (child_ != 0) {
    tcgetattr(master_, &modes_);
    return;
  }
  const rlimit no_core{};
  setrlimit(RLIMIT_CORE, &no_core);
  if (options.job) become_job();
  if (options.nonblocking) fcntl(STDIN_FILENO, F_SETFL, O_RDWR | O_NONBLOCK);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) std::signal(signal, SIG_DFL); // a shell may ignore them
  if (options.ignores != 0) std::signal(options.ignores, SIG_IGN);
  execute(home().path(), options);
}

TerminalDriver::~TerminalDriver() {
  if (child_ > 0) {
    if (program() > 0) kill(program(), SIGKILL);
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  if (master_ >= 0) close(master_);
  vterm_free(terminal_);
}

// Both directions at once: a program that is busy writing does not read.
void TerminalDriver::type(std::string_view keys) {
  const std::string typed = key_bytes(keys);
  std::string_view bytes = typed;
  while (!bytes.empty()) {
    pollfd ready{master_, POLLIN | POLLOUT, 0};
    if (poll(&ready, 1, 1000) <= 0) return;
    if ((ready.revents & POLLIN) != 0 && !read_output(0)) return;
    if ((ready.revents & POLLOUT) == 0) continue;
    const ssize_t count = write(master_, bytes.data(), std::min<std::size_t>(bytes.size(), 256));
    if (count <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

// Until the output waits.
void TerminalDriver::type_unread(std::string_view bytes) {
  EXPECT_EQ(write(master_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  pollfd ready{master_, POLLIN, 0};
  EXPECT_EQ(poll(&ready, 1, 1000 * static_cast<int>(kDeadline.count())), 1);
}

void TerminalDriver::enter_screen(std::string_view shown) {
  shows_text("*");
  type("CHANGE\n");
  shows_text(shown);
}

void TerminalDriver::resize(int rows, int columns) {
  vterm_set_size(terminal_, rows, columns);
  winsize size = size_of(rows, columns);
  ioctl(master_, TIOCSWINSZ, &size);
}

void TerminalDriver::hang_up() {
  close(master_);
  master_ = -1;
}

// The process group in the foreground has its number.
pid_t TerminalDriver::program() const { return master_ >= 0 ? tcgetpgrp(master_) : child_; }

bool TerminalDriver::stops() {
  int status = 0;
  for (const auto deadline = Clock::now() + kSoon; Clock::now() < deadline; read_output(1))
    if (waitpid(child_, &status, WNOHANG | WUNTRACED) == child_) return true;
  return false;
}

void TerminalDriver::go_on() { kill(child_, SIGCONT); }

std::size_t TerminalDriver::times_sent(std::string_view bytes) const {
  std::size_t times = 0;
  for (std::size_t at = 0; (at = output_.find(bytes, at)) != std::string::npos; ++at) ++times;
  return times;
}

bool TerminalDriver::has_its_modes() const {
  termios now{};
  return tcgetattr(master_, &now) == 0 && now.c_iflag == modes_.c_iflag && now.c_oflag == modes_.c_oflag &&
         now.c_cflag == modes_.c_cflag && now.c_lflag == modes_.c_lflag &&
         std::ranges::equal(now.c_cc, modes_.c_cc);
}

bool TerminalDriver::read_output(int milliseconds) {
  pollfd ready{master_, POLLIN, 0};
  if (poll(&ready, 1, milliseconds) <= 0) return true;
  char block[4096];
  const ssize_t count = read(master_, block, sizeof block);
  if (count <= 0) return false;
  output_.append(block, static_cast<std::size_t>(count));
  vterm_input_write(terminal_, block, static_cast<std::size_t>(count));
  return true;
}

void TerminalDriver::pause(int milliseconds) {
  const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
  for (auto now = Clock::now(); now < end && master_ >= 0; now = Clock::now())
    if (!read_output(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(end - now).count())))
      return;
}

Shown TerminalDriver::shown() const {
  int rows = 0;
  int columns = 0;
  vterm_get_size(terminal_, &rows, &columns);
  Shown picture;
  for (int row = 0; row < rows; ++row)
    picture.rows.push_back(row_text(vterm_obtain_screen(terminal_), row, columns));
  VTermPos cursor{};
  vterm_state_get_cursorpos(vterm_obtain_state(terminal_), &cursor);
  picture.cursor_row = cursor.row;
  picture.cursor_column = cursor.col;
  return picture;
}

bool TerminalDriver::wait_until(const std::function<bool(const Shown&)>& wanted,
                                const std::string& description) {
  const auto deadline = Clock::now() + kDeadline;
  bool open = true;
  while (!wanted(shown())) {
    if (!open || Clock::now() > deadline) {
      ADD_FAILURE() << "wanted:\n" << description << "shown:\n" << shown().to_string();
      return false;
    }
    open = read_output(100);
  }
  return true;
}

bool TerminalDriver::shows_text(std::string_view text) {
  const auto holds = [&](const std::string& row) { return row.find(text) != std::string::npos; };
  return wait_until([&](const Shown& now) { return std::ranges::any_of(now.rows, holds); },
                    "  ... " + std::string(text) + "\n");
}

int TerminalDriver::exit_status_unread() {
  const auto deadline = Clock::now() + kDeadline;
  int status = 0;
  while (waitpid(child_, &status, WNOHANG) == 0) {
    if (Clock::now() > deadline) return -1;
    poll(nullptr, 0, 5);
  }
  child_ = -1;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

int TerminalDriver::exit_status() {
  const auto deadline = Clock::now() + kDeadline;
  int status = 0;
  rusage usage{};
  bool open = master_ >= 0;
  while (wait4(child_, &status, WNOHANG, &usage) == 0) {
    if (Clock::now() > deadline) return -1;
    if (open) open = read_output(20);
    else poll(nullptr, 0, 5);
  }
  child_ = -1;
  while (open && Clock::now() < deadline) open = read_output(20); // the last bytes may still be on their way
  processor_seconds_ = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool terminal_is_described(const std::string& term) {
  std::array<char, 3> hex{};
  std::snprintf(hex.data(), hex.size(), "%02x", static_cast<unsigned char>(term.at(0)));
  for (const char* folder : {"/usr/share/terminfo/", "/lib/terminfo/", "/usr/lib/terminfo/"})
    for (const std::string& part : {term.substr(0, 1), std::string(hex.data())})
      if (std::filesystem::exists(folder + part + "/" + term)) return true;
  return false;
}
