#include "host/standard_input.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/abort.h"
#include "host/signals.h"

namespace zan {

namespace {

constexpr std::size_t kBlock = 64 * 1024;
// More bytes than this within that time are a paste: nobody types so fast.
constexpr std::size_t kPaste = 256;
constexpr std::chrono::milliseconds kMoment{100};

} // namespace

StandardInput::StandardInput() {
  struct stat info {};
  if (isatty(STDIN_FILENO) != 0) kind_ = Kind::terminal;
  else if (fstat(STDIN_FILENO, &info) == 0 && S_ISREG(info.st_mode)) kind_ = Kind::file;
  else kind_ = Kind::other;
}

bool StandardInput::lost_terminal() const { return is_terminal() && (failed_ || isatty(STDIN_FILENO) == 0); }

std::optional<std::string> StandardInput::read_line() {
  std::string line;
  do {
    const std::string_view rest = unread();
    const std::size_t end = rest.find_first_of(typed_as_keys_ ? "\r\n" : "\n");
    line.append(rest.substr(0, end));
    if (end != std::string_view::npos) {
      take(end + 1);
      return line;
    }
    take(rest.size());
    typed_as_keys_ = false;
  } while (wait_for_line());
  if (line.empty() || g_zan_abort_requested != 0) return std::nullopt;
  return line;
}

// In line mode a terminal returns one line per read, however large the block is.
bool StandardInput::wait_for_line() {
  const std::size_t most = kind_ == Kind::other ? 1 : kBlock;
  while (g_zan_pending_signal == 0) {
    if (idle_ && wait(nullptr, -1) < 0 && g_zan_abort_requested != 0) break;
    if (g_zan_pending_signal != 0) break;
    read(most);
    if (!unread().empty()) return true;
    if (ended_ || g_zan_abort_requested != 0) break;
    // Interrupted, or the descriptor is non-blocking.
    wait(nullptr, -1);
    if (g_zan_abort_requested != 0) break;
  }
  return false;
}

int StandardInput::wait(const sigset_t* mask, int milliseconds) const {
  for (;;) {
    const int limit = milliseconds < 0 && idle_ ? idle_() : milliseconds;
    if (milliseconds < 0 && g_zan_pending_signal != 0) return -1; // it came while that was done
    fd_set input;
    FD_ZERO(&input);
    FD_SET(STDIN_FILENO, &input);
    const timespec time{limit / 1000, limit % 1000 * 1'000'000L};
    const int ready = pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, limit < 0 ? nullptr : &time, mask);
    if (ready != 0 || limit == milliseconds) return ready;
  }
}

bool StandardInput::read_key_bytes() {
  if (const auto now = std::chrono::steady_clock::now(); now - moment_ > kMoment) {
    moment_ = now;
    at_once_ = 0;
  }
  const bool in_blocks = kind_ == Kind::file || (is_terminal() && at_once_ >= kPaste);
  at_once_ += read(in_blocks ? kBlock : 1);
  return !ended_;
}

void StandardInput::read_ahead() {
  while (is_terminal() && waits()) {
    read(kBlock);
    if (ended_) return;
  }
}

void StandardInput::read_across() {
  if (!is_terminal()) return;
  const std::size_t keys = typed_as_keys_ ? unread().size() : 0;
  typed_as_keys_ = true;
  ended_ = false;
  if (waits()) read(kBlock);
  std::replace(bytes_.end() - static_cast<std::ptrdiff_t>(unread().size() - keys), bytes_.end(), '\n', '\r');
}

void StandardInput::give_back() {
  if (kind_ != Kind::file) return;
  if (::lseek(STDIN_FILENO, -static_cast<off_t>(unread().size()), SEEK_CUR) < 0) return;
  take(unread().size());
  ended_ = false;
}

std::size_t StandardInput::read(std::size_t most) {
  bytes_.erase(0, used_);
  used_ = 0;
  const std::size_t before = bytes_.size();
  bytes_.resize(before + most);
  const ssize_t count = ::read(STDIN_FILENO, bytes_.data() + before, most);
  const bool later = count < 0 && (errno == EINTR || errno == EAGAIN);
  const std::size_t got = count > 0 ? static_cast<std::size_t>(count) : 0;
  bytes_.resize(before + got);
  ended_ = count <= 0 && !later;
  failed_ = count < 0 && !later;
  return got;
}

StandardInput& standard_input() {
  static StandardInput the_input;
  return the_input;
}

} // namespace zan
