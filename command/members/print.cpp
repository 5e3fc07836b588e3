#include "app/editor.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/console.h"
#include "host/signals.h"
#include "host/unique_fd.h"
#include "text/bytes.h"

#if !defined(_GNU_SOURCE) // with which unistd.h declares it
extern char** environ;
#endif

namespace {

// A file that its owner alone may read, removed with the object.
class TemporaryPrintFile {
 public:
  TemporaryPrintFile() : file_(mkstemp(path_)) {}
  ~TemporaryPrintFile() {
    if (exists_) ::unlink(path_);
  }
  TemporaryPrintFile(const TemporaryPrintFile&) = delete;
  TemporaryPrintFile& operator=(const TemporaryPrintFile&) = delete;

  bool exists() const { return exists_; }
  std::string path() const { return path_; }

  // Writes the lines, if any, each with a line feed, and closes the file.
  bool write(const std::optional<zan::LineStore>& lines) {
    const bool written = !lines || write_lines(*lines);
    return file_.close() && written;
  }

 private:
  bool write_lines(const zan::LineStore& lines) const {
    zan::PieceWalker walker(lines, 0, lines.byte_count());
    bool written = true;
    for (zan::Chunk chunk; written && walker.next(chunk);)
      written = zan::write_fully(file_.get(), chunk.bytes);
    return written && zan::write_fully(file_.get(), "\n");
  }

  char path_[24] = "/tmp/zan_print_XXXXXX";
  zan::UniqueFd file_;
  bool exists_ = static_cast<bool>(file_);
};

// While it lives, Ctrl/C and Ctrl/\ are ignored here, because they are meant for the child that runs.
class InterruptsLeftToChild {
 public:
  InterruptsLeftToChild() {
    sigemptyset(&signals_);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], &ignore, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) sigaddset(&signals_, kSignals[i]);
    }
  }
  ~InterruptsLeftToChild() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  }
  InterruptsLeftToChild(const InterruptsLeftToChild&) = delete;
  InterruptsLeftToChild& operator=(const InterruptsLeftToChild&) = delete;

  const sigset_t& signals() const { return signals_; } // less those that were ignored before

 private:
  static constexpr std::array kSignals{SIGINT, SIGQUIT};
  std::array<struct sigaction, kSignals.size()> before_{};
  sigset_t signals_{};
};

// As system(3), but a pending signal ends the wait for the child.
bool run_in_shell(std::string command) {
  const InterruptsLeftToChild interrupts;
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  posix_spawnattr_setsigdefault(&attributes, &interrupts.signals());
  std::string shell = "sh";
  std::string option = "-c";
  const std::array<char*, 4> words{shell.data(), option.data(), command.data(), nullptr};
  pid_t child = -1;
  const bool started = posix_spawn(&child, "/bin/sh", nullptr, &attributes, words.data(), environ) == 0;
  posix_spawnattr_destroy(&attributes);
  if (!started) return false;
  int status = -1;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR && g_zan_pending_signal == 0) {}
  return status == 0;
}

} // namespace

void Editor::print_command(const std::string& arg, bool verbose) {
  TemporaryPrintFile file;
  if (!file.exists()) {
    report(verbose, "?Cannot create temp file");
    return;
  }
  const std::string range_text = trim(arg);
  LineRange range{0, current.line_count() - 1};
  if (!range_text.empty()) {
    const auto named = named_range(range_text, verbose);
    if (!named) return;
    range = *named;
  }
  const auto lines = current.lines_in_range(range.first, range.last);
  if (!file.write(lines)) {
    report(verbose, "?Cannot open temp file for print");
    return;
  }
  console.flush();
  console.release_input();
  const std::string path = file.path();
  const std::string command = "lpr " + path + " 2>/dev/null || lp " + path + " 2>/dev/null";
  if (run_in_shell(command)) say(verbose, "Sent to printer\n");
  else report(verbose, "?Print failed");
}
