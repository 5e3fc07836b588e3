#include "host/console.h"

#include <unistd.h>

#include "host/signals.h"
#include "host/write_bytes.h"

namespace zan {

namespace {

constexpr std::size_t kOutputBlock = 64 * 1024;

} // namespace

bool write_fully(int descriptor, std::string_view text) {
  return write_bytes(descriptor, text, g_zan_pending_signal) == text.size();
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
  constexpr int kMoment = 50; // milliseconds: what a program types is there sooner
  return input_.unread().empty() && input_.wait(nullptr, kMoment) == 0;
}

void Console::release_input() { input_.give_back(); }

} // namespace zan
