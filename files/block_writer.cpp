#include "files/block_writer.h"

#include <fcntl.h>

#include "host/unique_fd.h"

namespace zan {

namespace {

constexpr std::size_t kBlockSize = 256 * 1024;
constexpr std::size_t kLargestWrite = 1U << 30; // some systems refuse a count of 2 GiB or more

} // namespace

std::size_t write_bytes(int descriptor, std::string_view bytes, Abort& abort) {
  std::size_t written = 0;
  while (written < bytes.size() && abort == 0) {
    const std::size_t size = std::min(bytes.size() - written, kLargestWrite);
    const ssize_t count = ::write(descriptor, bytes.data() + written, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break; // a write that takes nothing would be repeated for ever
    written += static_cast<std::size_t>(count);
  }
  return written;
}

BlockWriter::BlockWriter(int descriptor, Abort& abort)
    : descriptor_(descriptor), abort_(abort), block_(kBlockSize, '\0') {}

bool BlockWriter::put_across(std::string_view bytes) {
  // Filled up first: then no small write comes between large ones.
  const std::size_t room = used_ == 0 ? 0 : block_.size() - used_;
  if (room > 0) put(bytes.substr(0, room));
  bytes.remove_prefix(room);
  if (!flush()) return false;
  return bytes.size() < kBlockSize ? put(bytes) : write_out(bytes);
}

bool BlockWriter::flush() {
  const std::size_t size = std::exchange(used_, 0);
  return write_out(std::string_view(block_).substr(0, size));
}

bool BlockWriter::write_out(std::string_view bytes) {
  if (failed_) return false;
  const std::size_t count = write_bytes(descriptor_, bytes, abort_);
  written_ += count;
  failed_ = count < bytes.size();
  return !failed_;
}

bool sync_fully(int descriptor) {
#ifdef F_FULLFSYNC
  // There fsync stops at the drive's own cache. Network and foreign file systems refuse this.
  if (retry([&] { return ::fcntl(descriptor, F_FULLFSYNC); }) == 0) return true;
#endif
  if (retry([&] { return ::fsync(descriptor); }) == 0) return true;
  return errno == EINVAL || errno == ENOTSUP || errno == EROFS;
}

} // namespace zan
