#include "host/console.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

#include "host/signals.h"

namespace zan {

namespace {

constexpr std::size_t kOutputBlock = 64 * 1024;

// Of a descriptor that somebody has set not to wait.
void wait_for_room(int descriptor) {
  pollfd output{descriptor, POLLOUT, 0};
  poll(&output, 1, -1);
}

} // namespace

bool write_fully(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR && g_zan_pending_signal == 0) continue;
    if (count < 0 && errno == EAGAIN && g_zan_pending_signal == 0) {
      wait_for_room(descriptor);
      continue;
    }
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
  return input_.read_line();
}

bool Console::waits_for_input() const {
  constexpr int kMoment = 50; // milliseconds: what is typed by a program is there sooner
  return input_.unread().empty() && input_.wait(nullptr, kMoment) == 0;
}

void Console::release_input() { input_.give_back(); }

} // namespace zan
