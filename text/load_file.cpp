#include "text/load_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zan {

namespace {

constexpr std::size_t kReadSize =
    256 * 1024; // small enough that the bytes are still in the cache when they are looked at
// Blocks for bytes beyond the size that fstat reported: a pipe has none, a file may grow.
constexpr std::size_t kFirstExtraBlock = 64 * 1024;
constexpr std::size_t kLastExtraBlock = 64 * 1024 * 1024;

class InputFile {
 public:
  InputFile(const std::string& path, Abort& abort) : abort_(abort) {
    do {
      descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (descriptor_ < 0 && errno == EINTR && abort_ == 0);
    const bool missing = descriptor_ < 0 && (errno == ENOENT || errno == ENOTDIR);
    struct stat status {};
    readable_ = descriptor_ >= 0 && fstat(descriptor_, &status) == 0 && !S_ISDIR(status.st_mode);
    if (readable_ && S_ISREG(status.st_mode)) size_ = static_cast<std::uint64_t>(status.st_size);
    if (readable_) state_ = state_of(status);
    if (!readable_ && !missing) state_.kind = FileState::Kind::unreadable;
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  bool readable() const { return readable_; }
  std::uint64_t size() const { return size_; } // what is known of it; 0 for a pipe
  const FileState& state() const { return state_; }

  // Bytes read, 0 only at the end (size > 0); nothing on error or abort.
  std::optional<std::size_t> read_some(char* into, std::size_t size) {
    while (abort_ == 0) {
      const auto count = read(descriptor_, into, size);
      if (count >= 0) return static_cast<std::size_t>(count);
      if (errno != EINTR) return std::nullopt;
    }
    return std::nullopt;
  }

 private:
  Abort& abort_;
  int descriptor_ = -1;
  bool readable_ = false;
  std::uint64_t size_ = 0;
  FileState state_;
};

// Collects the text as it comes in. A trailing carriage return is held back until the next byte is known: it
// lies after the used part of the block.
class Loader {
 public:
  explicit Loader(std::size_t size_hint)
      : block_(Block::make(size_hint + 1)) {} // 1 more: the read that finds the end needs space

  // Reads once: bytes read, or nothing on error.
  std::optional<std::size_t> read_from(InputFile& file) {
    if (block_->free_space() == held_back()) next_block();
    const std::size_t begin = block_->used();
    const std::size_t end = begin + held_back();
    const auto count = file.read_some(block_->data() + end, std::min(block_->capacity() - end, kReadSize));
    if (count && *count > 0) {
      last_byte_ = block_->data()[end + *count - 1];
      block_->set_used(remove_returns(begin, end + *count - held_back()));
      if (held_back() > 0) block_->data()[block_->used()] = '\r';
      block_->extend_index();
    }
    return count;
  }

  LoadedText finish() {
    close_block();
    LineStore lines = builder_.finish();
    if (last_byte_ == '\n') lines.erase(lines.byte_count() - 1, lines.byte_count());
    return {std::move(lines), !last_byte_ || last_byte_ == '\n', !last_byte_};
  }

 private:
  std::size_t held_back() const { return last_byte_ == '\r' ? 1 : 0; }

  // Removes the carriage returns before line feeds from [begin, end) of the block; the new end. The byte
  // after a carriage return is always known: a trailing one is held back, and lies at `end`.
  std::size_t remove_returns(std::size_t begin, std::size_t end) {
    char* const data = block_->data();
    std::size_t to = find_return(begin, end);
    for (std::size_t from = to; from < end;) {
      if (data[from] == '\r') {
        const bool removed = data[from + 1] == '\n';
        if (!removed) data[to++] = '\r';
        returns_ = returns_ || !removed;
        ++from;
      } else {
        const std::size_t stretch = find_return(from, end) - from;
        std::memmove(data + to, data + from, stretch);
        to += stretch;
        from += stretch;
      }
    }
    return to;
  }

  // Offset of the next carriage return in [begin, end), or end.
  std::size_t find_return(std::size_t begin, std::size_t end) const {
    const std::size_t at = block_->view(begin, end - begin).find('\r');
    return at == std::string_view::npos ? end : begin + at;
  }

  void close_block() {
    if (block_->used() == 0) return;
    Piece piece;
    piece.block = block_;
    piece.length = block_->used();
    piece.breaks = block_->breaks_in(0, block_->used());
    piece.returns = returns_;
    builder_.append_piece(std::move(piece));
    total_ += block_->used();
  }

  void next_block() {
    close_block();
    returns_ = false;
    block_ = Block::make(std::clamp(total_, kFirstExtraBlock, kLastExtraBlock));
    if (held_back() > 0) block_->data()[0] = '\r';
  }

  BlockRef block_;
  LineStoreBuilder builder_;
  std::size_t total_ = 0;         // bytes in the blocks before this one
  std::optional<char> last_byte_; // that was read
  bool returns_ = false;          // in this block, except the one held back
};

std::optional<LoadedText> load_from(InputFile& file) {
  Loader loader(in_memory(file.size()));
  for (;;) {
    const auto count = loader.read_from(file);
    if (!count) return std::nullopt;
    if (*count == 0) return loader.finish();
  }
}

std::optional<std::string> read_whole(InputFile& file) {
  std::string bytes;
  std::size_t used = 0;
  for (;;) {
    const std::size_t first = file.size() > 0 ? in_memory(file.size() + 1) : kFirstExtraBlock;
    if (used == bytes.size()) bytes.resize(std::max(first, 2 * used));
    const auto count = file.read_some(bytes.data() + used, bytes.size() - used);
    if (!count) return std::nullopt;
    used += *count;
    if (*count > 0) continue;
    bytes.resize(used);
    return bytes;
  }
}

// What `read` makes of the file; nothing also when the file is larger than memory.
template <typename Result> Result if_readable(InputFile& file, Result (*read)(InputFile&)) {
  if (!file.readable()) return std::nullopt;
  try {
    return read(file);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

} // namespace

FileState state_of(const struct stat& file) {
#if defined(__APPLE__)
  const struct timespec& changed = file.st_mtimespec;
#else
  const struct timespec& changed = file.st_mtim;
#endif
  return {FileState::Kind::present,
          static_cast<std::uint64_t>(file.st_dev),
          static_cast<std::uint64_t>(file.st_ino),
          static_cast<std::int64_t>(file.st_size),
          static_cast<std::int64_t>(changed.tv_sec),
          static_cast<std::int64_t>(changed.tv_nsec)};
}

std::optional<LoadedText> load_file(const std::string& path, FileState* found, Abort& abort) {
  InputFile file(path, abort);
  auto loaded = if_readable(file, load_from);
  if (found != nullptr) *found = file.state();
  if (found != nullptr && !loaded && file.readable()) found->kind = FileState::Kind::unreadable;
  return loaded;
}

std::optional<std::string> read_whole_file(const std::string& path, Abort& abort) {
  InputFile file(path, abort);
  return if_readable(file, read_whole);
}

} // namespace zan
