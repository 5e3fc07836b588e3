#include "files/in_place.h"

#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

#include "files/file_attributes.h"
#include "files/private_copy.h"

namespace zan {

namespace {

struct NewText {
  TemporaryFile file;
  std::uint64_t size = 0;
  std::string path = {};
};

std::optional<NewText> copy_into(int directory, const std::string& path, const std::string& leaf,
                                 const ByteSource& source) {
  std::uint64_t size = 0;
  auto file = make_private_copy(directory, leaf, [&](int descriptor) {
    BlockWriter out(descriptor);
    const bool written = source(out) && out.flush();
    size = out.written();
    return written;
  });
  if (!file || !sync_directory(directory)) return std::nullopt;
  std::string name = path + file->name();
  return NewText{std::move(*file), size, std::move(name)};
}

// Beside the file, or where there is room.
std::optional<NewText> copy_of_new_text(const Place* place, const ByteSource& source) {
  const std::string leaf = place != nullptr ? place->leaf : std::string("text");
  if (place != nullptr) {
    if (auto copy = copy_into(place->directory.get(), place->path, leaf, source)) return copy;
  }
  for (const std::string& path : and_spare_directories({})) {
    const UniqueFd directory = open_directory(path);
    if (!directory) continue;
    if (auto copy = copy_into(directory.get(), path_in(path, ""), leaf, source)) return copy;
  }
  return std::nullopt;
}

// Two editors that overwrite one file at once would mix their texts. True also where files cannot be locked.
bool lock_now(int file) {
#if defined(F_OFD_SETLK) // kept when another descriptor of the file is closed
  constexpr int kSetLock = F_OFD_SETLK;
#else
  constexpr int kSetLock = F_SETLK;
#endif
  struct flock whole {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return ::fcntl(file, kSetLock, &whole) == 0 || (errno != EAGAIN && errno != EACCES);
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

InPlace write_in_place(UniqueFd target, const std::string& path, const Place* place, const ByteSource& source,
                       const Guard& guard) {
  if (!lock_now(target.get())) return {};
  std::optional<NewText> copy = copy_of_new_text(place, source);
  OthersText others;
  struct stat before {};
  if (!copy || !others.keep_bytes(target.get(), path, guard) || ::fstat(target.get(), &before) != 0)
    return {};
  if (!reserve_space(target.get(), copy->size)) {
    set_length(target.get(), before.st_size); // releases what was reserved beyond the end
    return {};
  }
  BlockWriter out(target.get());
  copy->file.keep(true); // from here on, whatever ends this function
  others.stay(true);
  // Synced before and after the truncation: the copy may go only when both have reached the disk.
  bool saved = source(out) && out.flush() && sync_fully(target.get()) &&
               set_length(target.get(), static_cast<off_t>(copy->size)) && sync_fully(target.get());
  // A write clears the set-user-id bits; the owner may set them again.
  set_mode_bits(target.get(), before.st_mode);
  struct stat after {};
  const bool known = ::fstat(target.get(), &after) == 0;
  saved = target.close() && saved;
  const bool touched = saved || out.written() > 0 || !known || after.st_size != before.st_size;
  const bool halfway = touched && !saved;
  copy->file.keep(halfway);
  others.stay(touched);
  FileState state;
  if (touched) state = known ? state_of(after) : FileState{FileState::Kind::unreadable};
  return {saved, state, others.path(), halfway ? copy->path : ""};
}

} // namespace zan
