#include "files/safe_save.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "files/file_attributes.h"
#include "files/in_place.h"
#include "files/place.h"
#include "files/stat.h"
#include "host/held_signals.h"

namespace zan {

namespace {

constexpr mode_t kNewFile = 0666; // less what the umask or the directory's default access list clears
constexpr int kAttempts = 10;     // other processes may create and remove the name meanwhile

enum class RenameResult { saved, failed, not_possible };

// The file of a standard stream must not be replaced: what the stream writes next would be lost.
bool is_standard_stream(const struct stat& file) {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    struct stat stream {};
    if (::fstat(descriptor, &stream) == 0 && same_file(stream, file)) return true;
  }
  return false;
}

// Is the file that was opened the one that a rename to `place` would replace, and has it no other name?
bool may_be_replaced(const struct stat& file, const Place& place) {
  struct stat entry {};
  return file.st_nlink == 1 && !is_standard_stream(file) &&
         ::fstatat(place.directory.get(), place.leaf.c_str(), &entry, AT_SYMLINK_NOFOLLOW) == 0 &&
         same_file(entry, file);
}

bool write_to(int descriptor, const ByteSource& source, Abort& abort = kNeverAborted) {
  BlockWriter out(descriptor, abort);
  return source(out) && out.flush();
}

// A name may be refused because of its directory, or because something is mounted on it.
bool rename_is_refused(int error) {
  return error == EPERM || error == EACCES || error == EBUSY || error == EXDEV;
}

FileState state_of_open(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 ? state_of(status) : FileState{FileState::Kind::unreadable};
}

RenameResult replace_by_rename(int target, mode_t mode, const Place& place, const ByteSource& source,
                               const Guard& guard, Saved& saved) {
  const HeldSignals held; // ending here would leave a temporary file behind
  TemporaryFile fresh(place.directory.get(), place.leaf, kOwnerOnly);
  // First on the empty file, because this decides whether a rename will do. Again later, because a write
  // clears some attributes.
  if (!fresh || !copy_owner_and_attributes(target, fresh.descriptor())) return RenameResult::not_possible;
  if (!write_to(fresh.descriptor(), source)) return RenameResult::failed;
  if (!copy_owner_and_attributes(target, fresh.descriptor()) || !set_mode_bits(fresh.descriptor(), mode)) {
    return RenameResult::not_possible;
  }
  if (!sync_fully(fresh.descriptor())) return RenameResult::failed;
  const FileState state = state_of_open(fresh.descriptor());
  OthersText others;
  if (!fresh.close() || !others.keep_entry(place, guard)) return RenameResult::failed;
  if (!fresh.rename_over(place.leaf)) {
    return rename_is_refused(errno) ? RenameResult::not_possible : RenameResult::failed;
  }
  others.stay(true);
  saved.kept = others.path();
  saved.state = state;
  return sync_directory(place.directory.get()) ? RenameResult::saved : RenameResult::failed;
}

// A device or a pipe: there is no old text to keep, and nothing to truncate. An interrupt ends the wait for
// its reader.
bool write_stream(UniqueFd target, const ByteSource& source) {
  return write_to(target.get(), source, g_zan_abort_requested) && sync_fully(target.get()) && target.close();
}

SaveResult result_of(bool saved) { return saved ? SaveResult::saved : SaveResult::failed; }

Saved overwrite(const std::string& path, UniqueFd target, const ByteSource& source, const Guard& guard) {
  struct stat file {};
  if (::fstat(target.get(), &file) != 0) return {};
  if (!S_ISREG(file.st_mode)) return {result_of(write_stream(std::move(target), source))};
  const std::optional<Place> place = find_place(path);
  Saved saved;
  if (place && may_be_replaced(file, *place)) {
    const RenameResult renamed = replace_by_rename(target.get(), file.st_mode, *place, source, guard, saved);
    saved.result = result_of(renamed == RenameResult::saved);
    if (renamed != RenameResult::not_possible) return saved;
  }
  const InPlace written = write_in_place(std::move(target), path, place ? &*place : nullptr, source, guard);
  return {result_of(written.saved), written.state, written.kept, written.unsaved};
}

Saved create(const std::string& path, const ByteSource& source) {
  const std::optional<Place> place = find_place(path);
  if (!place) return {};
  const HeldSignals held; // ending here would leave a temporary file behind
  TemporaryFile fresh(place->directory.get(), place->leaf, kNewFile);
  if (!fresh || !write_to(fresh.descriptor(), source) || !sync_fully(fresh.descriptor())) return {};
  const FileState state = state_of_open(fresh.descriptor());
  if (!fresh.close()) return {};
  if (!fresh.rename_to_new(place->leaf)) return {errno == EEXIST ? SaveResult::exists : SaveResult::failed};
  return {result_of(sync_directory(place->directory.get())), state};
}

bool name_is_taken(const std::string& path) { // also by a dangling link
  struct stat entry {};
  return ::lstat(path.c_str(), &entry) == 0;
}

} // namespace

Saved save_file(const std::string& path, const ByteSource& source, SaveMode mode, const Guard& guard) {
  if (!is_usable_path(path)) return {};
  if (mode == SaveMode::create_exclusively) {
    return name_is_taken(path) ? Saved{SaveResult::exists} : create(path, source);
  }
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    UniqueFd target = open_target(path);
    if (target) return overwrite(path, std::move(target), source, guard);
    if (errno != ENOENT) break;
    Saved created = create(path, source);
    if (created.result != SaveResult::exists) return created; // another process has just created it
  }
  return {};
}

} // namespace zan
