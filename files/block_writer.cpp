#include "files/block_writer.h"

#include <fcntl.h>

#include "host/unique_fd.h"
#include "host/write_bytes.h"

namespace zan {

namespace {

constexpr std::size_t kBlockSize = 256 * 1024;

} // namespace

BlockWriter::BlockWriter(int descriptor, Abort& abort)
    : descriptor_(descriptor), abort_(abort), block_(kBlockSize, '\0') {}

bool BlockWriter::put_across(std::string_view bytes) {
  // Fill the block first, so that no small write comes between large ones.
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
  const std::size_t count = abort_ == 0 ? write_bytes(descriptor_, bytes, abort_) : 0;
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
