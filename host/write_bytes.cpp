#include "host/write_bytes.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace zan {

namespace {

// Some systems refuse a count of 2 GiB or more, and Linux takes several times as long for much more than
// this.
constexpr std::size_t kLargestWrite = 1U << 20;

// For a descriptor that some program has made non-blocking.
void wait_for_room(int descriptor) {
  pollfd output{descriptor, POLLOUT, 0};
  poll(&output, 1, -1);
}

} // namespace

std::size_t write_bytes(int descriptor, std::string_view bytes, Abort& abort) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const std::string_view rest = bytes.substr(written, kLargestWrite);
    const ssize_t count = ::write(descriptor, rest.data(), rest.size());
    const bool must_wait = count < 0 && errno == EAGAIN;
    const bool interrupted = count < 0 && errno == EINTR;
    if (count <= 0 && !must_wait && !interrupted) break; // a write of nothing would be repeated for ever
    if (count > 0) written += static_cast<std::size_t>(count);
    if (abort != 0) break;
    if (must_wait) wait_for_room(descriptor);
  }
  return written;
}

} // namespace zan
