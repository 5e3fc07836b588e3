#include "host/console.h"

#include <cerrno>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/abort.h"
#include "host/signals.h"

namespace zan {

namespace {

constexpr std::size_t kOutputBlock = 64 * 1024;
constexpr std::size_t kInputBlock = 64 * 1024;

// A terminal hands out one line at a time and a file can be wound back; anything else, such as a pipe, is
// read byte by byte, because what is read beyond the line could not be given back.
std::size_t safe_chunk() {
  struct stat info {};
  if (isatty(STDIN_FILENO) != 0) return kInputBlock;
  if (fstat(STDIN_FILENO, &info) == 0 && S_ISREG(info.st_mode)) return kInputBlock;
  return 1;
}

} // namespace

bool write_fully(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR && g_zan_pending_signal == 0) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
    if (g_zan_pending_signal != 0) return text.empty(); // the rest would have to wait
  }
  return true;
}

void Console::write(std::string_view text) {
  if (output_.size() + text.size() > kOutputBlock) flush();
  if (g_zan_pending_signal != 0) return;
  if (text.size() >= kOutputBlock) {
    write_fully(STDOUT_FILENO, text);
    return;
  }
  output_.append(text);
}

void Console::write_error(std::string_view text) {
  flush();
  if (g_zan_pending_signal == 0) write_fully(STDERR_FILENO, text);
}

void Console::flush() {
  if (!output_.empty() && g_zan_pending_signal == 0) write_fully(STDOUT_FILENO, output_);
  output_.clear();
}

std::optional<std::string> Console::read_line() {
  flush();
  std::string line;
  for (;;) {
    const std::string_view rest = std::string_view(input_).substr(input_used_);
    if (const std::size_t end = rest.find('\n'); end != std::string_view::npos) {
      line.append(rest.substr(0, end));
      input_used_ += end + 1;
      return line;
    }
    line.append(rest);
    if (!fill()) break;
  }
  if (line.empty() || g_zan_abort_requested != 0) return std::nullopt;
  return line;
}

bool Console::fill() {
  if (chunk_ == 0) chunk_ = safe_chunk();
  input_used_ = 0;
  input_.resize(chunk_);
  ssize_t count = 0;
  do {
    if (g_zan_pending_signal != 0) break;
    count = ::read(STDIN_FILENO, input_.data(), chunk_);
  } while (count < 0 && errno == EINTR && g_zan_abort_requested == 0);
  input_.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return count > 0;
}

bool Console::is_terminal() { return isatty(STDIN_FILENO) != 0; }

bool Console::waits_for_input() const {
  constexpr int kMoment = 50; // milliseconds: what is typed by a program is there sooner
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return input_used_ == input_.size() && poll(&input, 1, kMoment) == 0;
}

void Console::release_input() {
  const std::size_t unread = input_.size() - input_used_;
  if (unread > 0 && chunk_ > 1 && ::lseek(STDIN_FILENO, -static_cast<off_t>(unread), SEEK_CUR) < 0) return;
  input_.clear();
  input_used_ = 0;
  chunk_ = 0;
}

std::string Console::take_input() {
  release_input();
  std::string unread = input_.substr(input_used_);
  input_.clear();
  input_used_ = 0;
  return unread;
}

void Console::put_back(std::string_view bytes) {
  input_.replace(0, input_used_, bytes);
  input_used_ = 0;
}

} // namespace zan
