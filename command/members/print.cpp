#include "app/editor.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "files/block_writer.h"
#include "host/signals.h"
#include "text/bytes.h"

extern char** environ;

namespace {

// A file of its owner's only, which goes with the object.
class TemporaryPrintFile {
 public:
  TemporaryPrintFile() : descriptor_(mkstemp(path_)) {}
  ~TemporaryPrintFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (exists_) ::unlink(path_);
  }
  TemporaryPrintFile(const TemporaryPrintFile&) = delete;
  TemporaryPrintFile& operator=(const TemporaryPrintFile&) = delete;

  bool exists() const { return exists_; }
  std::string path() const { return path_; }

  // The lines, if any, each with a line feed, as stored. The file is closed then.
  bool write(const std::optional<zan::LineStore>& lines) {
    const bool written = !lines || write_lines(*lines);
    const bool closed = ::close(descriptor_) == 0;
    descriptor_ = -1;
    return written && closed;
  }

 private:
  bool write_lines(const zan::LineStore& lines) const {
    zan::PieceWalker walker(lines, 0, lines.byte_count());
    bool written = true;
    for (zan::Chunk chunk; written && walker.next(chunk);)
      written = zan::write_fully(descriptor_, chunk.bytes);
    return written && zan::write_fully(descriptor_, "\n");
  }

  char path_[24] = "/tmp/zan_print_XXXXXX";
  int descriptor_;
  bool exists_ = descriptor_ >= 0;
};

// What is typed to interrupt or quit while a child runs is meant for the child.
class ChildsKeys {
 public:
  ChildsKeys() {
    sigemptyset(&for_child_);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], &ignore, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) sigaddset(&for_child_, kSignals[i]);
    }
  }
  ~ChildsKeys() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  }
  ChildsKeys(const ChildsKeys&) = delete;
  ChildsKeys& operator=(const ChildsKeys&) = delete;

  const sigset_t& for_child() const { return for_child_; } // what it is not to ignore

 private:
  static constexpr std::array kSignals{SIGINT, SIGQUIT};
  std::array<struct sigaction, kSignals.size()> before_{};
  sigset_t for_child_{};
};

// As the library's function does it, but a signal that asks the program to end is not held up by the child.
bool run_in_shell(std::string command) {
  const ChildsKeys keys;
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  posix_spawnattr_setsigdefault(&attributes, &keys.for_child());
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
