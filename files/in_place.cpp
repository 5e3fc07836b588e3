#include "files/in_place.h"

#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

#include "files/file_attributes.h"

namespace zan {

namespace {

constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;

struct PrivateCopy {
  TemporaryFile file;
  std::uint64_t size = 0;
};

// A whole, synced copy in one directory, or nothing.
std::optional<PrivateCopy> copy_into(int directory, const std::string& leaf, const ByteSource& source) {
  TemporaryFile file(directory, leaf, kPrivate);
  if (!file) return std::nullopt;
  BlockWriter out(file.descriptor());
  if (!source(out) || !out.flush() || !sync_fully(file.descriptor()) || !file.close()) return std::nullopt;
  if (!sync_directory(directory)) return std::nullopt;
  return PrivateCopy{std::move(file), out.written()};
}

// Beside the file, or where there is room.
std::optional<PrivateCopy> make_private_copy(const Place* place, const ByteSource& source) {
  const std::string leaf = place != nullptr ? place->leaf : std::string("text");
  if (place != nullptr) {
    if (auto copy = copy_into(place->directory.get(), leaf, source)) return copy;
  }
  for (const char* path : {static_cast<const char*>(std::getenv("TMPDIR")), "/tmp"}) {
    if (path == nullptr) continue;
    const UniqueFd directory = open_directory(path);
    if (!directory) continue;
    if (auto copy = copy_into(directory.get(), leaf, source)) return copy;
  }
  return std::nullopt;
}

// Claims the disk space of the first `size` bytes, holes included, without changing a byte or the length.
// False when there is no room; true where that cannot be asked for.
bool reserve_space(int file, std::uint64_t size) {
  if (size == 0) return true;
#if defined(__linux__)
  if (retry([&] { return ::fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)); }) == 0)
    return true;
#elif defined(__APPLE__)
  struct stat status {};
  if (::fstat(file, &status) != 0) return false;
  if (static_cast<std::uint64_t>(status.st_size) >= size) return true;
  fstore_t request{};
  request.fst_flags = F_ALLOCATEALL;
  request.fst_posmode = F_PEOFPOSMODE; // counted from the end of the file
  request.fst_length = static_cast<off_t>(size) - status.st_size;
  if (::fcntl(file, F_PREALLOCATE, &request) != -1) return true;
#else
  (void)file;
  return true;
#endif
  return errno != ENOSPC && errno != EDQUOT && errno != EFBIG && errno != EIO;
}

bool set_length(int file, off_t length) {
  return retry([&] { return ::ftruncate(file, length); }) == 0;
}

} // namespace

bool write_in_place(UniqueFd target, const Place* place, const ByteSource& source) {
  std::optional<PrivateCopy> copy = make_private_copy(place, source);
  if (!copy) return false;
  struct stat before {};
  if (::fstat(target.get(), &before) != 0) return false;
  if (!reserve_space(target.get(), copy->size)) {
    set_length(target.get(), before.st_size); // gives back what was reserved beyond the end
    return false;
  }
  BlockWriter out(target.get());
  copy->file.keep(true); // from here on, whatever ends this function
  // Synced before and after the cut: the copy may go only when both have reached the disk.
  const bool saved = source(out) && out.flush() && sync_fully(target.get()) &&
                     set_length(target.get(), static_cast<off_t>(copy->size)) && sync_fully(target.get());
  // The system takes the set-user-id bits from a file that is written; its owner may put them back.
  set_mode_bits(target.get(), before.st_mode);
  const bool closed = target.close();
  copy->file.keep(!(saved && closed) && out.written() > 0);
  return saved && closed;
}

} // namespace zan
